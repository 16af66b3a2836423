#pragma once

#include <QJsonObject>
#include <QString>
#include <functional>

#include "onboarding/bounded_calls.h"
#include "server/server.h"

/// The server's side of a new bucket: what it says of its backups, and how it takes the
/// credential.

namespace quorvelle::onboarding {

/// Time as the wait for a new credential sees it.
struct Clock {
    /// Milliseconds since some point in the past, never going back.
    std::function<qint64()> now;
    /// Waits for so many milliseconds, or until an interrupt.
    std::function<void(int milliseconds)> sleep;
};

struct SaveResult {
    enum class Outcome {
        kSaved,
        kRefused,
        kNoAnswer,  ///< the server may have saved the settings all the same
    };

    Outcome outcome = Outcome::kNoAnswer;
    /// Of a save that did not succeed, for the user.
    QString message = {};
};

/// Whether the server keeps its backups in the build bucket. A server that cannot be
/// asked counts as one that does not.
bool backupsShareBucket(BoundedCalls& calls, const Server& server);

/// Hands the settings (storageSettings) to the server, which tries them before it
/// answers. Waits for at most a minute.
SaveResult saveStorage(BoundedCalls& calls, const Server& server, const QJsonObject& settings);

/// Saves until the server accepts: Cloudflare needs some seconds to make a credential
/// usable, so that the first refusals mean nothing. Tries again every two seconds until
/// half a minute has passed since the first try; `onFirstRefusal` is called once. No
/// answer, or `stopped`, ends it at once.
SaveResult saveUntilActive(const std::function<SaveResult()>& save, const Clock& clock,
                           const std::function<bool()>& stopped,
                           const std::function<void()>& onFirstRefusal);

/// Asks the server once whether these are its settings now; settles what a save without
/// an answer did.
bool hasStorage(BoundedCalls& calls, const Server& server, const QJsonObject& settings);

}  // namespace quorvelle::onboarding
