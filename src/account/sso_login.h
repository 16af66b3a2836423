#pragma once

#include <QJsonObject>
#include <QNetworkAccessManager>
#include <QObject>
#include <QString>
#include <QTcpServer>
#include <chrono>

class QTcpSocket;

namespace quorvelle {

/// Signs a person in through the server's single sign-on: a listener on 127.0.0.1 waits
/// for the browser, which the server redirects here with a one-time code, and the code is
/// exchanged for the result of the sign-in. One sign-in per object, on one thread.
///
/// Any number of connections may be open; each is answered as soon as its request head is
/// complete. The first request with a code ends the listening, all others get a page that
/// says nothing and change nothing.
class SsoLogin : public QObject {
    Q_OBJECT

public:
    using QObject::QObject;

    /// Opens the listener. Sets `url` to the link at which the person signs in, or `error`
    /// when there is no port to be had; false then. Trailing slashes of the server's base
    /// URL do not matter.
    bool start(const QString& server, QString* url, QString* error);

Q_SIGNALS:
    /// Emitted once, after the exchange. `result` is the server's reply object ("token",
    /// "user", "role", "groups", perhaps "note"), empty when not `ok`.
    void finished(bool ok, const QJsonObject& result, const QString& error);

private:
    void acceptConnections();
    void readRequest(QTcpSocket& socket);
    void exchangeHandoff(const QString& code);

    QString baseUrl;
    QTcpServer listener;
    quint16 port = 0;
    bool done = false;
    QNetworkAccessManager network;
};

/// How a sign-in ended.
struct SignIn {
    bool ok = false;
    QJsonObject result = {};
    QString error = {};
};

inline constexpr std::chrono::milliseconds kSignInLimit = std::chrono::minutes(5);

/// Waits in a local event loop until a started sign-in has finished, or has taken too long.
SignIn awaitSignIn(const SsoLogin& login, std::chrono::milliseconds limit = kSignInLimit);

}  // namespace quorvelle
