#pragma once

#include <QJsonObject>
#include <QNetworkAccessManager>
#include <QString>
#include <chrono>

#include "server/await_exchange.h"
#include "server/http_exchange.h"

namespace quorvelle::onboarding {

class Interrupts;

/// What came of one call.
struct CallResult {
    bool succeeded = false;
    /// The HTTP status, 0 when none arrived.
    int status = 0;
    /// The reply's JSON object; empty when it is none.
    QJsonObject object = {};
    /// Why it did not succeed.
    QString reason = {};

    /// Whether the other side gave a verdict. Without one it may have done what it was
    /// asked to do all the same.
    bool answered() const { return succeeded || status >= 300; }
};

/// What an interrupt does to a call under way.
enum class OnInterrupt {
    kGiveUp,  ///< for calls that only read
    /// For calls that change something, whose outcome has to be known: they get a few
    /// seconds more, unless a second interrupt comes.
    kGiveUpSoon,
    kGoOn,  ///< for calls that undo
};

/// Blocking requests that end: by an answer, by their time limit, or by an interrupt.
/// Nothing is printed. Main thread only, one at a time.
class BoundedCalls {
public:
    /// The interrupts must outlive this object. `grace` is what an interrupt leaves to a
    /// call that changes something.
    explicit BoundedCalls(const Interrupts& source,
                          std::chrono::milliseconds grace = std::chrono::seconds(5));

    /// A call that would be given up at once is not sent after an interrupt.
    CallResult send(HttpRequest request, const TimeLimit& limit, OnInterrupt onInterrupt);

    bool isInterrupted() const;

private:
    const Interrupts& interrupts;
    std::chrono::milliseconds graceTime;
    QNetworkAccessManager network;
};

}  // namespace quorvelle::onboarding
