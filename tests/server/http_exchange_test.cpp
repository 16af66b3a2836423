#include "server/http_exchange.h"

#include <QBuffer>
#include <QNetworkAccessManager>
#include <QTcpServer>

#include "server/await_exchange.h"
#include "support/fake_server.h"
#include "support/notation.h"
#include "support/raw_server.h"

namespace quorvelle::testing {

namespace {

struct Exchanged {
    bool ok;
    QJsonObject object;
    /// The failure text in the context "ctx".
    std::string failure;
    /// The bytes of the body that were on their way by the last report.
    qint64 sent = 0;
};

Exchanged run(HttpRequest request, HttpExchange::Sink sink = {}) {
    QNetworkAccessManager network;
    HttpExchange exchange(network, std::move(request));
    if (sink) {
        exchange.streamTo(std::move(sink));
    }
    qint64 sent = 0;
    QObject::connect(&exchange, &HttpExchange::sent, [&](qint64 bytes) { sent = bytes; });
    await(exchange);
    return {exchange.succeeded(), exchange.object(), exchange.failureText("ctx").toStdString(),
            sent};
}

Exchanged get(const QString& url, HttpExchange::Sink sink = {}) {
    return run({.method = "GET", .url = QUrl(url), .token = "t"}, std::move(sink));
}

/// A reply with "~" for its line ends.
std::string reply(QString text) {
    return text.replace("~", "\r\n").toStdString();
}

}  // namespace

/// "..." stands for the network layer's own words.
TEST(HttpExchange, SaysWhatTheServerSaidOfAFailure) {
    FakeServer server;
    for (const QStringList& row : rows(R"(
        404 | {"error":"no build '7'"}        | no build '7'
        409 | {"x":1,"error":"100%1 taken"}   | 100%1 taken
        401 | {"error":"größe"}               | größe
        400 | {"error":""}                    |
        404 | {"error":{"code":1}}            | ...
        502 | <html>error</html>              | ...
        400 | ["error"]                       | ...
        500 |                                 | ...)")) {
        SCOPED_TRACE(row[1].toStdString());
        server.on("GET", "/x", answering(row[1].toStdString(), row[0].toInt()));
        const Exchanged ran = get(server.url() + "/x");
        EXPECT_FALSE(ran.ok);
        const std::string start = "ctx failed (HTTP " + row[0].toStdString() + "): ";
        if (row[2] == "...") {
            EXPECT_THAT(ran.failure, StartsWith(start + "Error transferring "));
        } else {
            EXPECT_EQ(ran.failure, start + row[2].toStdString());
        }
    }
}

TEST(HttpExchange, SaysThatNobodyListens) {
    const QString nobody = FakeServer().url();
    EXPECT_EQ(get(nobody + "/x").failure, "ctx failed: Connection refused");
}

/// Each row: the reply's head and body, "done" or how the failure's text goes on.
TEST(HttpExchange, TellsAWholeReplyFromOneCutShort) {
    for (const QStringList& row : rows(R"(
        200 OK~Content-Length: 7~~{"a":1}              | done
        299 OK~~{"a":1}                                | done
        200 OK~Transfer-Encoding: chunked~~2~{}~0~~    | done
        200 OK~Content-Type: application/json~Content-Length: 6~~{"a":1 | done
        200 OK~Content-Type: application/json~~{"a":1  | (HTTP 200): the reply is cut short
        200 OK~Content-Type: application/json~Transfer-Encoding: chunked~~7~{"a":1 |
        200 OK~Content-Encoding: gzip~~                | (HTTP 200): the reply is cut short
        200 OK~Content-Encoding: br~~x                 | (HTTP 200): the reply has the unknown content coding "br"
        200 OK~Content-Length: 8~~{"a":1}              | (HTTP 200):
        200 OK~Content-Le                              |
        103 Early Hints~~HTTP/1.1 200 OK~Content-Length: 2~~{} | (HTTP 103): the server sent no final answer
        102 Processing~~                               | (HTTP 102): the server sent no final answer
        000 Nothing~Content-Length: 2~~{}              |)")) {
        SCOPED_TRACE(row[0].toStdString());
        const std::string bytes = reply("HTTP/1.1 " + row[0]);
        const Exchanged ran = get(RawServer(bytes).url() + "/x");
        EXPECT_EQ(ran.ok, row[1] == "done") << ran.failure;
        const QString failure = QString("ctx failed " + row[1]).trimmed();
        EXPECT_TRUE(ran.ok || ran.failure.starts_with(failure.toStdString())) << ran.failure;
    }
    for (const char* bytes : {"220 smtp ready\r\n\r\n", ""}) {
        const RawServer server(bytes);
        EXPECT_THAT(get(server.url() + "/x").failure, StartsWith("ctx failed")) << bytes;
    }
}

TEST(HttpExchange, FailsWhenTheConnectionIsReset) {
    for (const char* bytes :
         {"", "220 smtp ready~~", "HTTP/1.1 200 OK~Content-Le", "HTTP/1.1 102 Processing~~",
          "HTTP/1.1 200 OK~Content-Length: 8~~{'a':1}",
          "HTTP/1.1 200 OK~Content-Type: application/json~~{'a':1",
          "HTTP/1.1 200 OK~Content-Encoding: gzip~~"}) {
        const RawServer server(reply(bytes), RawServer::Ending::kReset);
        EXPECT_THAT(get(server.url() + "/x").failure, StartsWith("ctx failed")) << bytes;
    }
}

/// A repeated creation would leave a second invite or token that nobody was told of.
TEST(HttpExchange, SendsACreationOnceWhenTheAnswerIsLost) {
    for (const QByteArray& body : {QByteArray(), QByteArray("{}")}) {
        const RawServer server("");
        const QUrl url(server.url() + "/x");
        EXPECT_EQ(run({.method = "POST", .url = url, .body = body}).failure,
                  "ctx failed: Connection closed");
        EXPECT_EQ(server.served(), 1);
    }
}

/// A change is repeated with its body or not at all, and gives nothing to another origin.
TEST(HttpExchange, FollowsRedirectsThatLeaveTheRequestAsItIs) {
    FakeServer home;
    FakeServer other;
    for (const std::string method : {"GET", "POST", "PUT", "DELETE"}) {
        const bool isRead = method == "GET";
        const std::string body = method == "POST" ? "x" : method == "PUT" ? "from a device" : "";
        for (const int status : {301, 302, 303, 307, 308}) {
            SCOPED_TRACE(method + std::to_string(status));
            QBuffer file;
            file.setData("from a device");
            file.open(QIODevice::ReadOnly | QIODevice::Append);
            HttpRequest request{.method = method.c_str(),
                                .url = QUrl(home.url() + "/old"),
                                .token = "t",
                                .contentType = "a/b",
                                .body = "x"};
            request.bodyDevice = method == "PUT" ? &file : nullptr;
            const std::string refusal =
                "ctx failed (HTTP " + std::to_string(status) + "): the server redirects to \"";
            home.forget();
            home.on(method, "/old", redirectTo("/new?a=%2F", status));
            home.onJson(method, "/new?a=%2F", json("{'a':1}"));
            const Exchanged ran = run(request);
            if (isRead || status >= 307) {
                EXPECT_EQ(text(ran.object), "{'a':1}");
                EXPECT_EQ(ran.sent, qint64(body.size()));
                EXPECT_THAT(home.lines(), ElementsAre(method + " /old", method + " /new?a=%2F"));
            } else {
                EXPECT_EQ(ran.failure, refusal + "/new?a=%2F\"");
                EXPECT_THAT(home.lines(), ElementsAre(method + " /old"));
            }
            for (const SeenRequest& seen : home.requests()) {
                EXPECT_EQ(seen.header("Authorization") + seen.header("Content-Type") + seen.body,
                          "Bearer ta/b" + body);
            }
            if (!isRead) {
                home.on(method, "/old", redirectTo(other.url() + "/new", status));
                EXPECT_EQ(run(request).failure, refusal + other.url().toStdString() + "/new\"");
            }
        }
    }
    EXPECT_THAT(other.lines(), IsEmpty());
}

TEST(HttpExchange, NeverCarriesTheTokenToAnotherOrigin) {
    FakeServer home;
    FakeServer other;
    home.on("GET", "/1", redirectTo(other.url() + "/2", 302));
    other.on("GET", "/2", redirectTo(home.url() + "/3", 307));
    home.onJson("GET", "/3", json("{'a':1}"));
    EXPECT_TRUE(get(home.url() + "/1").ok);
    ASSERT_THAT(home.lines(), ElementsAre("GET /1", "GET /3"));
    ASSERT_THAT(other.lines(), ElementsAre("GET /2"));
    EXPECT_EQ(home.requests()[0].header("Authorization"), "Bearer t");
    EXPECT_EQ(other.requests()[0].header("Authorization"), "(none)");
    EXPECT_EQ(home.requests()[1].header("Authorization"), "(none)");
}

TEST(HttpExchange, FollowsNeitherALoopNorOtherSchemes) {
    FakeServer server;
    server.on("GET", "/a", redirectTo("/b", 302));
    server.on("GET", "/b", redirectTo("/a", 302));
    for (const char* target : {"/a", "file:///etc/hostname", "ftp://127.0.0.1/x",
                               "data:application/json,{}", "", "http://[broken"}) {
        SCOPED_TRACE(target);
        server.on("GET", "/x", redirectTo(target, 302));
        EXPECT_THAT(get(server.url() + "/x").failure, StartsWith("ctx failed (HTTP 302): "));
        EXPECT_THAT(get(target).failure, StartsWith("ctx failed: "));
    }
    EXPECT_LE(server.lines().size(), 25U);
}

TEST(HttpExchange, StreamsTheBodyOfASuccessAlone) {
    std::string large;
    for (int i = 0; large.size() < (3 << 20); ++i) {
        large += std::to_string(i) + ' ';
    }
    FakeServer server;
    server.on("GET", "/old", redirectTo("/large", 302));
    server.onBytes("GET", "/large", large);
    server.onBytes("GET", "/empty", "");
    server.onJson("GET", "/gone", json("{'error':'gone'}"), 410);
    std::string got;
    const auto keep = [&got](const QByteArray& bytes) {
        got += bytes.toStdString();
        return true;
    };
    EXPECT_TRUE(get(server.url() + "/empty", keep).ok);
    EXPECT_EQ(get(server.url() + "/gone", keep).failure, "ctx failed (HTTP 410): gone");
    EXPECT_EQ(got, "");
    EXPECT_TRUE(get(server.url() + "/old", keep).ok);
    EXPECT_TRUE(got == large) << got.size();
    int refused = 0;
    EXPECT_FALSE(get(server.url() + "/large", [&](const QByteArray&) { return ++refused < 1; }).ok);
    EXPECT_EQ(refused, 1);
}

/// Nobody accepts here, but the system does: a connection stands and nothing comes.
TEST(HttpExchange, WaitsForNobodyForEver) {
    qputenv("QUORVELLE_IDLE_TIMEOUT", "1");
    QTcpServer silent;
    ASSERT_TRUE(silent.listen(QHostAddress::LocalHost));
    const QString place = QStringLiteral("://127.0.0.1:%1/x").arg(silent.serverPort());
    for (const char* method : {"GET", "PUT", "POST", "DELETE"}) {
        for (const char* body : {"x", ""}) {
            EXPECT_EQ(run({.method = method, .url = QUrl("http" + place), .body = body}).failure,
                      "ctx failed: no data for 1 s")
                << method << body;
        }
    }
    // The handshake is a part of making the connection.
    EXPECT_EQ(get("https" + place).failure, "ctx failed: no connection within 1 s");
    qunsetenv("QUORVELLE_IDLE_TIMEOUT");
}

/// A server may close a kept connection in the moment in which a request leaves, and a POST
/// is not sent twice.
TEST(HttpExchange, SendsEveryPostOnAConnectionOfItsOwn) {
    FakeServer server;
    std::vector<int> ports;
    server.onAnythingElse([&](const httplib::Request& request, httplib::Response& response) {
        ports.push_back(request.remote_port);
        response.set_content("{}", "application/json");
    });
    QNetworkAccessManager network;
    const QUrl url(server.url() + "/x");
    for (const char* method : {"GET", "GET", "POST", "POST"}) {
        HttpExchange exchange(network, {.method = method, .url = url, .body = "x"});
        await(exchange);
    }
    ASSERT_EQ(ports.size(), 4U);
    EXPECT_EQ(ports[0], ports[1]);
    EXPECT_NE(ports[1], ports[2]);
    EXPECT_NE(ports[2], ports[3]);
}

TEST(HttpExchange, SendsTheTokenWithoutItsLineEnd) {
    FakeServer server;
    server.onJson("GET", "/x", {});
    const QUrl url(server.url() + "/x");
    for (const auto& [token, sent] :
         {std::pair{"tok\n", "Bearer tok"}, {" tok\r\n", "Bearer tok"}, {" \n", "(none)"}}) {
        server.forget();
        EXPECT_TRUE(run({.method = "GET", .url = url, .token = token}).ok);
        EXPECT_EQ(server.requests().at(0).header("Authorization"), sent);
    }
    server.forget();
    for (const char* token : {"tok\r\nX-Evil: 1", "t\ttok", "a\x7f"}) {
        EXPECT_EQ(run({.method = "GET", .url = url, .token = token}).failure,
                  "ctx failed: the token holds characters that cannot be sent");
    }
    EXPECT_THAT(server.lines(), IsEmpty());
}

}  // namespace quorvelle::testing
