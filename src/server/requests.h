#pragma once

#include <QJsonObject>
#include <QString>

#include "server/url.h"

class QIODevice;

/// Blocking calls to a server's API, one request each. A call waits in a local
/// event loop without a time limit; main thread only, one at a time.
///
/// `server` is the base URL, `path` begins with "/" and is already encoded
/// (apiPath), `label` names the command in messages. The bearer token is the one
/// of the server that the command resolved (server_option.h).

namespace quorvelle {

/// The reply's JSON object, empty when the body is none. When `ok` is false the
/// message has been printed and the handler returns kExitFailed.
struct Reply {
    QJsonObject object;
    bool ok = false;
};

Reply getJson(const QString& server, const QString& path, const QString& label);

/// Sends the object as compact JSON.
Reply postJson(const QString& server, const QString& path, const QString& label,
               const QJsonObject& body);

/// What came of a request whose failure the command words itself; nothing was printed.
struct Answer {
    /// The reply's JSON object, also that of a refusal.
    QJsonObject object = {};
    /// The HTTP status of the reply, 0 when none arrived.
    int status = 0;
    bool ok = false;
};

/// Sends the object as compact JSON with the given bearer token; an empty one sends none.
Answer postJsonAs(const QString& token, const QString& server, const QString& path,
                  const QJsonObject& body);

/// Whether a request carries the bearer token. None is for a server that is yet to give
/// its own, which must not be shown the token of another one.
enum class Bearer { kToken, kNone };

/// Sends an empty body of type application/octet-stream.
Reply postEmpty(const QString& server, const QString& path, const QString& label,
                const QueryItems& query = {}, Bearer bearer = Bearer::kToken);

/// Sends the object as compact JSON.
Reply putJson(const QString& server, const QString& path, const QString& label,
              const QJsonObject& body);

/// Streams the open device from its beginning as application/octet-stream; memory
/// does not grow with its size.
Reply putFile(const QString& server, const QString& path, const QString& label,
              const QueryItems& query, QIODevice& content);

Reply deleteResource(const QString& server, const QString& path, const QString& label,
                     const QueryItems& query = {});

}  // namespace quorvelle
