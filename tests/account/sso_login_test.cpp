#include "account/sso_login.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QTcpSocket>
#include <QTimer>
#include <functional>

#include "account/browser.h"
#include "account/handoff_request.h"
#include "support/fake_server.h"
#include "support/notation.h"

namespace quorvelle::testing {

namespace {

using namespace std::chrono_literals;

const QByteArray kHead =
    "HTTP/1.1 200 OK\r\nContent-Type: text/html; charset=utf-8\r\nConnection: close\r\n";
const QByteArray kNothing = kHead +
                            "Content-Length: 92\r\n\r\n"
                            "<!doctype html><meta charset=utf-8><title>Quorvelle</title>"
                            "<body>Nothing to see here.</body>";
const QByteArray kSignedIn =
    kHead +
    "Content-Length: 344\r\n\r\n"
    "<!doctype html><meta charset=utf-8><title>Quorvelle</title><body style='font-family:"
    "system-ui;background:#060a14;color:#dce7f5;display:grid;place-items:center;height:100vh;"
    "margin:0'><div style='text-align:center'><h2>Signed in</h2><p>You can close this window and "
    "return to Quorvelle.</p></div><script>history.replaceState(null,'','/')</script>";
const char kExchange[] = "/api/sso/handoff";

QByteArray request(const char* target, const QByteArray& more = {}) {
    return QByteArray("GET ") + target + " HTTP/1.1\r\n" + more + "\r\n";
}

/// Runs the event loop until the condition holds; false when it never does.
bool until(const std::function<bool()>& holds) {
    const QDeadlineTimer limit(30s);
    QTimer wake;
    wake.start(50ms);
    while (!holds() && !limit.hasExpired()) {
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    return holds();
}

/// A started sign-in with a server, and browsers of the test's own.
struct SsoLoginTest : ::testing::Test {
    SsoLoginTest() {
        QObject::connect(&login, &SsoLogin::finished, &login,
                         [this](bool ok, const QJsonObject& result, const QString& error) {
                             ended.append(ok ? QString::fromStdString(text(result)) : error);
                         });
        QString error;
        EXPECT_TRUE(login.start(server.url() + "//", &url, &error)) << error.toStdString();
        port = quint16(url.section(u'=', 1).toUInt());
    }

    std::unique_ptr<QTcpSocket> connected() {
        auto socket = std::make_unique<QTcpSocket>();
        socket->connectToHost("127.0.0.1", port);
        EXPECT_TRUE(until([&] {
            return socket->state() == QTcpSocket::ConnectedState ||
                   socket->state() == QTcpSocket::UnconnectedState;
        }));
        return socket;
    }
    bool isListening(const char* address = "127.0.0.1") const {
        httplib::Client browser(address, port);
        return browser.Get("/").error() != httplib::Error::Connection;
    }
    static QByteArray answerOn(QTcpSocket& socket, const QByteArray& bytes) {
        socket.write(bytes);
        EXPECT_TRUE(until([&] { return socket.state() == QTcpSocket::UnconnectedState; }));
        return socket.readAll();
    }
    QByteArray ask(const QByteArray& bytes) { return answerOn(*connected(), bytes); }

    FakeServer server;
    SsoLogin login;
    QString url;
    quint16 port = 0;
    QStringList ended;
};

}  // namespace

TEST(HandoffRequest, CountsOnlyAsTheBrowsersOwnRedirect) {
    for (const QStringList& row : rows(R"(
        GET /?handoff=abc HTTP/1.1                                        | abc
        GET /?x=1&handoff=a%2Fb%25+c&y HTTP/1.1                           | a/b%+c
        GET /?handoff=abc HTTP/1.1~Host: 127.0.0.1~SEC-Fetch-Dest: document | abc
        GET /?handoff=abc HTTP/1.1~Sec-Fetch-Mode: cors~~Host: x.example  | abc
        GET /?handoff= HTTP/1.1                                           |
        GET /handoff=abc HTTP/1.1                                         |
        GET /#handoff=abc HTTP/1.1                                        |
        GET /?handoff=abc                                                 |
        GET /?handoff=abc~Host: 127.0.0.1 HTTP/1.1                        |
        POST /?handoff=abc HTTP/1.1                                       |
        GET /?handoff=abc HTTP/1.1~Host: localhost:80                     | abc
        GET /?handoff=abc HTTP/1.1~Host: my-pc                            | abc
        GET /?handoff=abc HTTP/1.1~Host:                                  | abc
        GET /?handoff=abc HTTP/1.1~Host: 127.0.0.1:81                     |
        GET /?handoff=abc HTTP/1.1~Host: 127.0.0.1.evil.example:80        |
        GET /?handoff=abc HTTP/1.1~Host: [::1]:80                         |
        GET /?handoff=abc HTTP/1.1~host: 127.0.0.1:80~Host: evil.example  |
        GET /?handoff=abc HTTP/1.1~sec-fetch-dest: image                  |
        GET /?handoff=abc HTTP/1.1~Sec-Fetch-Dest: iframe~X: y            |
        ~~                                                                |)")) {
        SCOPED_TRACE(row[0].toStdString());
        const QByteArray head = row[0].toUtf8().replace("~", "\r\n");
        EXPECT_EQ(handoffIn(head + "\r\n\r\nHost: x.y\r\n", 80), row[1]);
        const QByteArray unended = row[0].section("~~", 0, 0).toUtf8().replace("~", "\r\n");
        EXPECT_EQ(handoffIn(unended + "\r\n", 80), row[1]) << "no blank line";
    }
    for (const char* torn : {"", "\r", "\r\nHost: www.ev", "\r\nA: b\r\nSec-Fetch-Dest: docu\r"}) {
        EXPECT_EQ(handoffIn(QByteArray("GET /?handoff=abc HTTP/1.1") + torn, 80), "abc") << torn;
    }
}

TEST(Browser, IsForAddressesOfTheWebAlone) {
    for (const char* url : {"http://a/", "HTTPS://a:1/b?port=2"}) {
        EXPECT_TRUE(isWebUrl(url)) << url;
    }
    for (const char* url : {"", "a/b", "/bin/sh", "file:///bin/sh", "file://a/b", "ftp://a/",
                            "javascript:1", "--help", "http://[/", "http:///a", "httpx://a/"}) {
        EXPECT_FALSE(isWebUrl(url)) << url;
    }
}

TEST_F(SsoLoginTest, EndsWithTheFirstHandoff) {
    server.onJson("POST", kExchange, json("{'token':'t'}"));
    EXPECT_EQ(url, server.url() + "/api/sso/start?port=" + QString::number(port));
    EXPECT_FALSE(isListening("127.0.0.2"));
    const auto silent = connected();
    const auto second = connected();
    const auto slow = connected();
    slow->write("GET /?handoff=late HTTP/1.1\r\nHost: 127.");
    EXPECT_EQ(ask(request("/favicon.ico")), kNothing);
    EXPECT_EQ(ask(request("/?handoff=abc", "Host: other.example\r\n")), kNothing);
    EXPECT_EQ(slow->bytesAvailable(), 0);
    EXPECT_THAT(server.lines(), ElementsAre());

    EXPECT_EQ(ask(request("/?handoff=a%22b", "Host: 127.0.0.1:" + QByteArray::number(port) +
                                                 "\r\nSec-Fetch-Dest: document\r\n")),
              kSignedIn);
    EXPECT_FALSE(isListening());
    EXPECT_EQ(answerOn(*second, request("/?handoff=other")), kNothing);
    EXPECT_EQ(answerOn(*slow, "0.0.1\r\n\r\n"), kNothing);
    EXPECT_TRUE(until([&] { return !ended.isEmpty(); }));
    EXPECT_EQ(ended, QStringList("{'token':'t'}"));
    EXPECT_EQ(silent->state(), QTcpSocket::ConnectedState);
    ASSERT_EQ(server.requests().size(), 1U);
    const SeenRequest seen = server.requests()[0];
    EXPECT_EQ(seen.line() + '|' + seen.header("Content-Type") + '|' + seen.header("Authorization") +
                  '|' + seen.body,
              std::string("POST ") + kExchange + R"(|application/json|(none)|{"code":"a\"b"})");
}

TEST_F(SsoLoginTest, TakesARequestInPieces) {
    const auto socket = connected();
    for (const char byte : request("/?handoff=abc").chopped(1)) {
        socket->write(&byte, 1);
        socket->flush();
        QCoreApplication::processEvents();
    }
    EXPECT_EQ(ask(request("/")), kNothing);
    EXPECT_EQ(socket->bytesAvailable(), 0);
    EXPECT_EQ(answerOn(*socket, "\n"), kSignedIn);
}

TEST_F(SsoLoginTest, TakesALongHeadAsItStands) {
    const QByteArray head = request("/?handoff=abc").chopped(2) + "X: " + QByteArray(5000, 'x');
    const auto socket = connected();
    socket->write(head.left(4095));
    EXPECT_EQ(ask(request("/")), kNothing);
    EXPECT_EQ(socket->bytesAvailable(), 0);
    EXPECT_EQ(answerOn(*socket, "x"), kSignedIn);
}

TEST_F(SsoLoginTest, ReportsARefusedExchangeAndATimeout) {
    EXPECT_EQ(awaitSignIn(login, 1ms).error, QString("sign-in timed out (5 minutes)"));
    EXPECT_EQ(kSignInLimit, 300000ms);
    server.onJson("POST", kExchange, json("{'error':'expired 100%1'}"), 403);
    EXPECT_EQ(ask(request("/?handoff=abc")), kSignedIn);
    EXPECT_TRUE(until([&] { return !ended.isEmpty(); }));
    EXPECT_EQ(ended, QStringList("sign-in failed (HTTP 403): expired 100%1"));
}

}  // namespace quorvelle::testing
