#pragma once

#include <QByteArray>
#include <QList>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QObject>
#include <QPair>
#include <QPointer>
#include <QString>
#include <QUrl>
#include <functional>
#include <memory>
#include <optional>
#include <utility>

#include "server/idle_watch.h"
#include "server/reply_body.h"

class QIODevice;
class QNetworkAccessManager;

namespace quorvelle {

/// What is sent. Headers other than these are the network layer's own.
struct HttpRequest {
    QByteArray method = {};
    /// http or https. Fails unsent when its path has a segment "." or "..".
    QUrl url = {};
    /// Bearer token; empty sends no Authorization header. It is sent to the origin
    /// of `url` alone and never follows a redirect to another one. Blanks and line ends
    /// around it are taken off; with a control character inside the exchange fails unsent.
    QString token = {};
    /// Empty sends no Content-Type header.
    QByteArray contentType = {};
    /// The body where no device is given.
    QByteArray body = {};
    /// A seekable, open body device that outlives the exchange, or none.
    QIODevice* bodyDevice = nullptr;
    /// Further headers by name and value; they follow redirects, so none is a secret.
    QList<QPair<QByteArray, QByteArray>> headers = {};
};

/// One request and its reply, redirects included. Event-driven: start() returns at
/// once, finished() is emitted once, on the same thread. There is no time limit but that
/// something has to move (see IdleLimits).
///
/// A POST is sent at most once, for it may create something, and on a connection of its
/// own: one that was kept may be closing, unseen. The network layer repeats any other
/// request whose connection breaks before the answer.
///
/// Redirects are followed for GET, and with the codes 307 and 308 for every method, then
/// within the origin alone, for a body may hold secrets; any other redirect is a failure,
/// since it would turn a change into a read.
class HttpExchange : public QObject {
    Q_OBJECT

public:
    /// Takes the next bytes of a successful reply's body; false ends the exchange as
    /// failed.
    using Sink = ReplyBody::Sink;

    /// The manager must outlive the exchange.
    HttpExchange(QNetworkAccessManager& network, HttpRequest outgoing, QObject* parent = nullptr);
    ~HttpExchange() override;

    /// Hands a successful reply's body to `sink` as it arrives, so that memory does
    /// not grow with it; without one the body is kept, within the bounds of ReplyBody. To be
    /// called before start().
    void streamTo(Sink sink) { body.streamTo(std::move(sink)); }

    /// The length in bytes that a successful body has by another source, or nothing. A
    /// reply that tells no length of its own fails when it has another: the network layer
    /// may take a chunked body that was cut short for a whole one.
    void expectLength(std::optional<qint64> bytes) { body.expectLength(bytes); }

    void start();

    /// Gives a started exchange up, as failed for this reason; finished() is emitted
    /// before the call returns. After finished() it does nothing.
    void abort(const QString& reason);

    /// The rest is valid after finished().

    /// A reply of a status from 200 to 299 whose whole body arrived.
    bool succeeded() const { return !failed; }

    /// The body of a reply that was not streamed.
    const QByteArray& bytes() const { return body.bytes(); }

    /// The same as a JSON object; empty when it is none.
    QJsonObject object() const { return body.object(); }

    /// Whether there is a body and it is no JSON object.
    bool isOtherThanObject() const { return body.isOtherThanObject(); }

    /// The HTTP status of the reply, 0 when none arrived.
    int statusCode() const { return status; }

    /// Why an exchange failed: the server's own "error" text, else the network error.
    QString failureReason() const;

    /// The text of a failed exchange for the user: "<context> failed", the HTTP status
    /// when there is one, and the reason.
    QString failureText(const QString& context) const;

    /// The same of a reply that arrived and is of no use, for the reason given.
    QString failureText(const QString& context, const QString& reason) const;

Q_SIGNALS:
    /// How many bytes of the body are on their way; a body that is sent again counts anew.
    void sent(qint64 bytes);
    void finished();

private:
    void send();
    QNetworkReply* sendBodyOnce(QNetworkRequest outgoing);
    void readAvailable();
    void onReplyFinished();
    void conclude(const QString& reason);
    bool followRedirect(const QUrl& target);

    QNetworkAccessManager& manager;
    HttpRequest request;
    /// Owned by the manager, which may end before this object.
    QPointer<QNetworkReply> reply;
    /// Of the current reply.
    ReplyBody body;
    int status = 0;
    int redirects = 0;
    /// Why the exchange failed where the network layer does not say so itself.
    QString failure;
    bool failed = false;
    IdleWatch idleWatch{idleLimits()};
    QString abortReason;
};

/// Starts an exchange and keeps it until it finished, or until `owner` ends before that;
/// `onFinished` is called on the owner's thread, which is the exchange's.
void runOwned(std::unique_ptr<HttpExchange> exchange, QObject& owner,
              std::function<void(const HttpExchange&)> onFinished);

}  // namespace quorvelle
