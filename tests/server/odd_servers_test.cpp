#include <gmock/gmock.h>

#include <QNetworkAccessManager>
#include <QTcpServer>

#include "server/await_exchange.h"
#include "server/http_exchange.h"
#include "support/fake_server.h"

/// Servers, proxies and portals that are slow, broken or hostile.

namespace quorvelle::testing {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

std::string outcome(QNetworkAccessManager& network, HttpRequest request) {
    HttpExchange exchange(network, std::move(request));
    await(exchange);
    return exchange.succeeded() ? "done" : exchange.failureText("ctx").toStdString();
}

std::string outcome(HttpRequest request) {
    QNetworkAccessManager network;
    return outcome(network, std::move(request));
}

}  // namespace

/// Nobody accepts here, but the system does: a connection stands and nothing comes.
TEST(OddServers, AreNotWaitedForForEver) {
    qputenv("QUORVELLE_IDLE_TIMEOUT", "1");
    QTcpServer silent;
    ASSERT_TRUE(silent.listen(QHostAddress::LocalHost));
    const QString place = QStringLiteral("://127.0.0.1:%1/x").arg(silent.serverPort());
    for (const char* method : {"GET", "PUT", "POST", "DELETE"}) {
        for (const char* body : {"x", ""}) {
            EXPECT_EQ(outcome({.method = method, .url = QUrl("http" + place), .body = body}),
                      "ctx failed: no data for 1 s")
                << method << body;
        }
    }
    // The handshake is a part of making the connection.
    EXPECT_EQ(outcome({.method = "GET", .url = QUrl("https" + place)}),
              "ctx failed: no connection within 1 s");
    qunsetenv("QUORVELLE_IDLE_TIMEOUT");
}

TEST(OddServers, GetNoSecretsThatWereForOthers) {
    for (const char* method : {"PUT", "POST", "DELETE"}) {
        FakeServer home;
        FakeServer other;
        home.on(method, "/x", redirectTo(other.url() + "/y", 307));
        EXPECT_EQ(outcome({.method = method, .url = QUrl(home.url() + "/x"), .body = "secret"}),
                  "ctx failed (HTTP 307): the server redirects to \"" + other.url().toStdString() +
                      "/y\"");
        EXPECT_THAT(other.lines(), IsEmpty());
    }
}

/// A server may close a kept connection in the moment in which a request leaves, and a POST
/// is not sent twice.
TEST(OddServers, SeeEveryPostOnAConnectionOfItsOwn) {
    FakeServer server;
    std::vector<int> ports;
    server.onAnythingElse([&](const httplib::Request& request, httplib::Response& response) {
        ports.push_back(request.remote_port);
        response.set_content("{}", "application/json");
    });
    QNetworkAccessManager network;
    const QUrl url(server.url() + "/x");
    for (const char* method : {"GET", "GET", "POST", "POST"}) {
        EXPECT_EQ(outcome(network, {.method = method, .url = url, .body = "x"}), "done");
    }
    ASSERT_EQ(ports.size(), 4U);
    EXPECT_EQ(ports[0], ports[1]);
    EXPECT_NE(ports[1], ports[2]);
    EXPECT_NE(ports[2], ports[3]);
}

TEST(OddServers, GetTheTokenWithoutItsLineEnd) {
    FakeServer server;
    server.onJson("GET", "/x", {});
    for (const auto& [token, sent] :
         {std::pair{"tok\n", "Bearer tok"}, {" tok\r\n", "Bearer tok"}, {" \n", "(none)"}}) {
        server.forget();
        const QUrl url(server.url() + "/x");
        EXPECT_EQ(outcome({.method = "GET", .url = url, .token = token}), "done");
        EXPECT_EQ(server.requests().at(0).header("Authorization"), sent);
    }
    server.forget();
    for (const char* token : {"tok\r\nX-Evil: 1", "t\ttok", "a\x7f"}) {
        EXPECT_EQ(outcome({.method = "GET", .url = QUrl(server.url() + "/x"), .token = token}),
                  "ctx failed: the token holds characters that cannot be sent");
    }
    EXPECT_THAT(server.lines(), IsEmpty());
}

}  // namespace quorvelle::testing
