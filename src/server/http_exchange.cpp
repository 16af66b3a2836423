#include "server/http_exchange.h"

#include <QIODevice>
#include <QJsonObject>
#include <QNetworkAccessManager>
#include <QSslConfiguration>
#include <algorithm>
#include <memory>
#include <utility>

#include "server/authorities.h"
#include "server/once_body.h"
#include "server/proxies.h"

namespace quorvelle {

namespace {

constexpr qint64 kReadBufferBytes = 1024 * 1024;
constexpr int kMaxRedirects = 10;

bool sameOrigin(const QUrl& a, const QUrl& b) {
    const auto port = [](const QUrl& url) {
        return url.port(url.scheme() == QStringLiteral("https") ? 443 : 80);
    };
    return a.scheme() == b.scheme() && a.host() == b.host() && port(a) == port(b);
}

bool isHttp(const QUrl& url) {
    return url.scheme() == QStringLiteral("http") || url.scheme() == QStringLiteral("https");
}

/// The token as it is sent: files and variables that hold one end with a line.
QByteArray trimmedToken(const QString& token) {
    return token.toUtf8().trimmed();
}

/// A line end would begin a header of the token's own, or another request.
bool canBeSent(const QByteArray& token) {
    return std::none_of(token.begin(), token.end(),
                        [](char c) { return (c >= 0 && c < 0x20) || c == 0x7F; });
}

/// The network layer takes "." and ".." out of a path, even percent-encoded, which would
/// turn a request for a thing of that name into one for something else.
bool pathStandsAsGiven(const QUrl& url) {
    return url.adjusted(QUrl::NormalizePathSegments).path() == url.path();
}

bool isHttps(const QUrl& url) {
    return url.scheme() == QStringLiteral("https");
}

/// Why there is no way to the URL that the person asked for, or an empty text.
QString noWayTo(const QUrl& url) {
    const QString problem = proxyFor(url).problem;
    return problem.isEmpty() && isHttps(url) ? givenAuthorities().problem : problem;
}

/// Chooses the proxy and the authorities for the request's URL.
void findWay(QNetworkAccessManager& manager, QNetworkRequest& outgoing) {
    const QNetworkProxy proxy = proxyFor(outgoing.url()).proxy;
    manager.setProxy(proxy);
    if (isHttps(outgoing.url())) {
        if (const auto& given = givenAuthorities().certificates; !given.isEmpty()) {
            QSslConfiguration tls = outgoing.sslConfiguration();
            tls.setCaCertificates(given);
            outgoing.setSslConfiguration(tls);
        }
    } else if (proxy.type() == QNetworkProxy::HttpProxy && !proxy.user().isEmpty()) {
        // It would send the request without and, refused, once more, which a POST is not.
        outgoing.setRawHeader(
            "Proxy-Authorization",
            "Basic " + QString(proxy.user() + u':' + proxy.password()).toUtf8().toBase64());
    }
}

/// Why the network layer must not be given the URL, or an empty text.
QString refusal(const HttpRequest& request) {
    const QUrl& url = request.url;
    if (!url.isValid()) {
        return url.errorString();
    }
    if (!isHttp(url)) {
        // It would open files and the like by their URL.
        return QStringLiteral("Protocol \"%1\" is unknown").arg(url.scheme());
    }
    if (!pathStandsAsGiven(url)) {
        return QStringLiteral("the path \"%1\" cannot be sent").arg(url.path(QUrl::FullyEncoded));
    }
    if (!canBeSent(trimmedToken(request.token))) {
        return QStringLiteral("the token holds characters that cannot be sent");
    }
    return noWayTo(url);
}

int statusOf(const QNetworkReply& reply) {
    return reply.attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
}

/// The network layer rewinds the body at a redirect, whoever follows it, and fails where
/// that cannot be done.
bool isRefusedRewind(const QNetworkReply& reply) {
    return reply.error() == QNetworkReply::ContentReSendError && statusOf(reply) >= 300;
}

ReplyHead headOf(const QNetworkReply& reply) {
    return {.status = statusOf(reply),
            .coding = reply.rawHeader("Content-Encoding"),
            .type = reply.rawHeader("Content-Type"),
            .tellsLength = reply.hasRawHeader("Content-Length")};
}

}  // namespace

HttpExchange::HttpExchange(QNetworkAccessManager& network, HttpRequest outgoing, QObject* parent)
    : QObject(parent), manager(network), request(std::move(outgoing)) {
    connect(&idleWatch, &IdleWatch::expired, this, &HttpExchange::abort);
}

HttpExchange::~HttpExchange() {
    if (!reply.isNull()) {
        reply->disconnect(this);
        reply->deleteLater();
    }
}

void HttpExchange::start() {
    const QString reason = refusal(request);
    if (!reason.isEmpty()) {
        QMetaObject::invokeMethod(
            this, [this, reason] { conclude(reason); }, Qt::QueuedConnection);
        return;
    }
    send();
}

void HttpExchange::send() {
    QNetworkRequest outgoing(request.url);
    outgoing.setAttribute(QNetworkRequest::RedirectPolicyAttribute,
                          QNetworkRequest::ManualRedirectPolicy);
    // Named here, the network layer leaves the decompression to us (see Inflater).
    outgoing.setRawHeader("Accept-Encoding", "gzip");
    if (const QByteArray token = trimmedToken(request.token); !token.isEmpty()) {
        outgoing.setRawHeader("Authorization", "Bearer " + token);
    }
    if (!request.contentType.isEmpty()) {
        outgoing.setHeader(QNetworkRequest::ContentTypeHeader, request.contentType);
    }
    for (const auto& [name, value] : request.headers) {
        outgoing.setRawHeader(name, value);
    }
    findWay(manager, outgoing);
    const bool hasBody =
        request.bodyDevice != nullptr ? request.bodyDevice->size() > 0 : !request.body.isEmpty();
    if (request.method == "PUT" && !hasBody) {
        // With an empty body at hand, the network layer would not tell when the request left.
        outgoing.setHeader(QNetworkRequest::ContentLengthHeader, 0);
        reply = manager.sendCustomRequest(outgoing, request.method);
    } else if (request.bodyDevice != nullptr) {
        request.bodyDevice->seek(0);
        reply = manager.sendCustomRequest(outgoing, request.method, request.bodyDevice);
    } else if (request.method == "POST") {
        reply = sendBodyOnce(outgoing);
    } else if (request.method == "GET") {
        reply = manager.get(outgoing);
    } else if (request.method == "DELETE") {
        reply = manager.deleteResource(outgoing);
    } else {
        reply = manager.put(outgoing, request.body);
    }
    status = 0;
    body.begin();
    reply->setReadBufferSize(kReadBufferBytes);
    idleWatch.watch(*reply, {.changes = request.method != "GET",
                             .leavesUnseen = request.method == "POST" && !hasBody});
    connect(reply, &QNetworkReply::uploadProgress, this, [this](qint64 bytes, qint64 all) {
        // The network layer ends its reports with 0 of 0.
        if (all > 0) {
            Q_EMIT sent(bytes);
        }
    });
    connect(reply, &QNetworkReply::readyRead, this, &HttpExchange::readAvailable);
    connect(reply, &QNetworkReply::finished, this, &HttpExchange::onReplyFinished);
}

QNetworkReply* HttpExchange::sendBodyOnce(QNetworkRequest outgoing) {
    outgoing.setHeader(QNetworkRequest::ContentLengthHeader, request.body.size());
    // A body that it had buffered could be sent again.
    outgoing.setAttribute(QNetworkRequest::DoNotBufferUploadDataAttribute, true);
    // A server may close a kept connection at any moment; what is repeated for other
    // methods would fail here.
    manager.clearConnectionCache();
    auto device = std::make_unique<OnceBody>(request.body);
    QNetworkReply* sent = manager.sendCustomRequest(outgoing, request.method, device.get());
    device.release()->setParent(sent);
    return sent;
}

void HttpExchange::abort(const QString& reason) {
    if (!reply.isNull() && !reply->isFinished()) {
        abortReason = reason;
        reply->abort();
    }
}

void HttpExchange::readAvailable() {
    if (!abortReason.isEmpty()) {
        return;
    }
    const QByteArray bytes = reply->readAll();
    if (bytes.isEmpty()) {
        return;
    }
    status = statusOf(*reply);
    if (const QString problem = body.take(headOf(*reply), bytes); !problem.isEmpty()) {
        abortReason = problem;
        reply->abort();
    }
}

void HttpExchange::onReplyFinished() {
    readAvailable();
    status = statusOf(*reply);
    const QUrl target = reply->attribute(QNetworkRequest::RedirectionTargetAttribute).toUrl();
    if (!abortReason.isEmpty()) {
        conclude(abortReason);
    } else if (reply->error() != QNetworkReply::NoError && !isRefusedRewind(*reply)) {
        // The text alone does not tell a failure: it may be empty.
        failed = true;
        conclude(reply->error() == QNetworkReply::ContentReSendError
                     ? QStringLiteral("Connection closed")
                     : reply->errorString());
    } else if (status >= 300) {
        if (target.isEmpty()) {
            conclude(QStringLiteral("the server sent neither an answer nor a redirect"));
        } else if (!followRedirect(request.url.resolved(target))) {
            conclude(QStringLiteral("the server redirects to \"%1\"").arg(target.toString()));
        }
    } else if (status < 200) {
        conclude(QStringLiteral("the server sent no final answer"));
    } else if (body.isCutShort(headOf(*reply))) {
        conclude(QStringLiteral("the reply is cut short"));
    } else {
        conclude({});
    }
}

bool HttpExchange::followRedirect(const QUrl& target) {
    const bool keepsMethod = status == 307 || status == 308;
    const bool isRedirect = keepsMethod || ((status == 301 || status == 302 || status == 303) &&
                                            request.method == "GET");
    const bool lessSafe = isHttps(request.url) && !isHttps(target);
    if (!isRedirect || !target.isValid() || !isHttp(target) || lessSafe || target == request.url ||
        !noWayTo(target).isEmpty() || ++redirects > kMaxRedirects) {
        return false;
    }
    if (!sameOrigin(target, request.url)) {
        if (request.method != "GET") {
            return false;
        }
        request.token.clear();
    }
    request.url = target;
    reply->disconnect(this);
    reply->deleteLater();
    send();
    return true;
}

void HttpExchange::conclude(const QString& reason) {
    failure = reason;
    failed = failed || !reason.isEmpty();
    Q_EMIT finished();
}

QString HttpExchange::failureReason() const {
    const QJsonValue own = object().value(u"error");
    return own.isString() ? own.toString() : failure;
}

QString HttpExchange::failureText(const QString& context) const {
    return failureText(context, failureReason());
}

QString HttpExchange::failureText(const QString& context, const QString& reason) const {
    const QString code = status > 0 ? QStringLiteral(" (HTTP %1)").arg(status) : QString();
    return context + QStringLiteral(" failed") + code + QStringLiteral(": ") + reason;
}

void runOwned(std::unique_ptr<HttpExchange> exchange, QObject& owner,
              std::function<void(const HttpExchange&)> onFinished) {
    HttpExchange* running = exchange.release();
    running->setParent(&owner);
    QObject::connect(running, &HttpExchange::finished, &owner,
                     [running, done = std::move(onFinished)] {
                         // It is still in the middle of telling that it finished.
                         running->deleteLater();
                         done(*running);
                     });
    running->start();
}

}  // namespace quorvelle
