#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QString>
#include <functional>

#include "server/server.h"
#include "server/url.h"

class QIODevice;

/// Blocking calls to a server's API, one request each. A call waits in a local
/// event loop, for as long as anything moves; main thread only, one at a time.
///
/// `path` begins with "/" and is already encoded (apiPath), `label` names the command in
/// messages. A server that is yet to give its own token has an empty one: it must not be
/// shown that of another.

namespace quorvelle {

/// The reply's JSON object, empty when the body is none. When `ok` is false the
/// message has been printed and the handler returns kExitFailed.
struct Reply {
    QJsonObject object = {};
    bool ok = false;
    /// As it came.
    QByteArray body = {};
    /// The message of a failure.
    QString failure = {};
    /// What a person can do about it, or empty.
    QString nextStep = {};
};

/// Reports a failure that was left to the caller.
void printFailure(const Reply& reply);

/// Whether the body is a JSON object, be it an empty one.
bool isObject(const Reply& reply);

Reply getJson(const Server& server, const QString& path, const QString& label);

/// Sends the object as compact JSON.
Reply postJson(const Server& server, const QString& path, const QString& label,
               const QJsonObject& body);

/// What came of a request whose failure the command words itself; nothing was printed.
struct Answer {
    /// The reply's JSON object, also that of a refusal.
    QJsonObject object = {};
    /// The HTTP status of the reply, 0 when none arrived.
    int status = 0;
    bool ok = false;
};

/// Sends the object as compact JSON.
Answer askJson(const Server& server, const QString& path, const QJsonObject& body);

/// Sends an empty body of type application/octet-stream.
Reply postEmpty(const Server& server, const QString& path, const QString& label,
                const QueryItems& query = {});

/// Sends the object as compact JSON.
Reply putJson(const Server& server, const QString& path, const QString& label,
              const QJsonObject& body);

using SentCallback = std::function<void(qint64 bytes)>;

/// Streams the open device from its beginning as application/octet-stream; memory
/// does not grow with its size; `onSent` is told how much of it is on its way. A failure is
/// left to the caller to print, who can see whether the device was at fault.
Reply putFile(const Server& server, const QString& path, const QString& label,
              const QueryItems& query, QIODevice& content, const SentCallback& onSent);

Reply deleteResource(const Server& server, const QString& path, const QString& label,
                     const QueryItems& query = {});

}  // namespace quorvelle
