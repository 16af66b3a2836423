#include "account/sso_login.h"

#include <QEventLoop>
#include <QHostAddress>
#include <QJsonDocument>
#include <QTcpSocket>
#include <QTimer>

#include "account/handoff_request.h"
#include "config/server_url.h"
#include "server/http_exchange.h"
#include "server/url.h"

namespace quorvelle {

namespace {

constexpr qint64 kMaxHeadBytes = 4096;

const QByteArray kOtherPage =
    "<!doctype html><meta charset=utf-8><title>Quorvelle</title><body>Nothing to see here.</body>";
const QByteArray kSignedInPage =
    "<!doctype html><meta charset=utf-8><title>Quorvelle</title>"
    "<body style='font-family:system-ui;background:#060a14;color:#dce7f5;display:grid;"
    "place-items:center;height:100vh;margin:0'>"
    "<div style='text-align:center'><h2>Signed in</h2>"
    "<p>You can close this window and return to Quorvelle.</p></div>"
    // The code is spent, but need not stay in the history.
    "<script>history.replaceState(null,'','/')</script>";

void answer(QTcpSocket& socket, const QByteArray& page) {
    socket.write(
        "HTTP/1.1 200 OK\r\n"
        "Content-Type: text/html; charset=utf-8\r\n"
        "Connection: close\r\n"
        "Content-Length: " +
        QByteArray::number(page.size()) + "\r\n\r\n" + page);
    socket.flush();
    socket.disconnectFromHost();
}

}  // namespace

bool SsoLogin::start(const QString& server, QString* url, QString* error) {
    baseUrl = withoutTrailingSlashes(server);
    if (!listener.listen(QHostAddress::LocalHost, 0)) {
        *error = QStringLiteral("could not open a loopback port: %1").arg(listener.errorString());
        return false;
    }
    port = listener.serverPort();
    connect(&listener, &QTcpServer::newConnection, this, &SsoLogin::acceptConnections);
    *url = withoutUserInformation(baseUrl) + QStringLiteral("/api/sso/start?port=") +
           QString::number(port);
    return true;
}

void SsoLogin::acceptConnections() {
    while (QTcpSocket* socket = listener.nextPendingConnection()) {
        connect(socket, &QTcpSocket::readyRead, this, [this, socket] { readRequest(*socket); });
        connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
    }
}

void SsoLogin::readRequest(QTcpSocket& socket) {
    const QByteArray head = socket.peek(kMaxHeadBytes);
    if (!head.contains("\r\n\r\n") && head.size() < kMaxHeadBytes) {
        return;
    }
    socket.disconnect(this);
    const QString code = handoffIn(socket.readAll(), port);
    if (code.isEmpty() || done) {
        answer(socket, kOtherPage);
        return;
    }
    done = true;
    answer(socket, kSignedInPage);
    listener.close();
    exchangeHandoff(code);
}

void SsoLogin::exchangeHandoff(const QString& code) {
    const QJsonObject body{{QStringLiteral("code"), code}};
    const HttpRequest request{.method = "POST",
                              .url = apiUrl(baseUrl, QStringLiteral("/api/sso/handoff")),
                              .contentType = "application/json",
                              .body = QJsonDocument(body).toJson(QJsonDocument::Compact)};
    runOwned(std::make_unique<HttpExchange>(network, request), *this,
             [this](const HttpExchange& ended) {
                 if (ended.succeeded()) {
                     Q_EMIT finished(true, ended.object(), {});
                 } else {
                     Q_EMIT finished(false, {}, ended.failureText(QStringLiteral("sign-in")));
                 }
             });
}

SignIn awaitSignIn(const SsoLogin& login, std::chrono::milliseconds limit) {
    SignIn outcome{.error = QStringLiteral("sign-in timed out (5 minutes)")};
    QEventLoop loop;
    QObject::connect(&login, &SsoLogin::finished, &loop,
                     [&](bool ok, const QJsonObject& result, const QString& error) {
                         outcome = {.ok = ok, .result = result, .error = error};
                         loop.quit();
                     });
    QTimer::singleShot(limit, &loop, &QEventLoop::quit);
    loop.exec();
    return outcome;
}

}  // namespace quorvelle
