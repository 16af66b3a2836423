#include "server/http_exchange.h"

#include <gmock/gmock.h>

#include <QBuffer>
#include <QEventLoop>
#include <QNetworkAccessManager>

#include "support/fake_server.h"
#include "support/notation.h"
#include "support/raw_server.h"

namespace quorvelle::testing {

using ::testing::ElementsAre;
using ::testing::StartsWith;

namespace {

struct Exchanged {
    bool ok;
    QJsonObject object;
    /// The failure text in the context "ctx".
    std::string failure;
};

Exchanged run(HttpRequest request, HttpExchange::Sink sink = {}) {
    QNetworkAccessManager network;
    HttpExchange exchange(network, std::move(request));
    if (sink) {
        exchange.streamTo(std::move(sink));
    }
    QEventLoop loop;
    QObject::connect(&exchange, &HttpExchange::finished, &loop, &QEventLoop::quit);
    exchange.start();
    loop.exec();
    return {exchange.succeeded(), exchange.object(), exchange.failureText("ctx").toStdString()};
}

Exchanged get(const QString& url, HttpExchange::Sink sink = {}) {
    return run({.method = "GET", .url = QUrl(url), .token = "t"}, std::move(sink));
}

FakeServer::Answer redirectTo(const QString& target, int status) {
    return [target = target.toStdString(), status](const auto&, httplib::Response& response) {
        response.status = status;
        response.set_header("Location", target);
        response.set_content("{\"from\":\"redirect\"}", "application/json");
    };
}

FakeServer::Answer answer(int status, const std::string& body, const char* type = "text/plain") {
    return [=](const auto&, httplib::Response& response) {
        response.status = status;
        response.set_content(body, type);
    };
}

/// A reply with "~" for its line ends.
std::string reply(QString text) {
    return text.replace("~", "\r\n").toStdString();
}

/// 11 MiB that compress well, but not as a bomb does.
std::string largeText() {
    std::string text;
    for (int i = 0; text.size() < (11 << 20); ++i) {
        text += std::to_string(i) + std::string(99, 'x');
    }
    return text.substr(0, 11 << 20);
}

const std::string kLargeObject = "{\"a\":\"" + largeText() + "\"}";

std::string deflated() {
    return qCompress(QByteArray::fromStdString(kLargeObject)).mid(4).toStdString();
}

const std::string kDeflated = "HTTP/1.1 200 OK\r\nContent-Encoding: deflate\r\n";

/// A sink that keeps what it is given.
HttpExchange::Sink into(std::string& got) {
    got.clear();
    return [&got](const QByteArray& bytes) {
        got += bytes.toStdString();
        return true;
    };
}

}  // namespace

TEST(HttpExchange, TakesAnyBodyOfASuccess) {
    FakeServer server;
    for (const QStringList& row : rows(R"(
        {"a": [1]}     | {'a':[1]}
        hello          | {}
        [{"a":1}]      | {}
        {"a":1         | {}
        {"error":"no"} | {'error':'no'})")) {
        SCOPED_TRACE(row[0].toStdString());
        server.on("GET", "/x", answer(299, row[0].toStdString()));
        const Exchanged ran = get(server.url() + "/x");
        EXPECT_TRUE(ran.ok) << ran.failure;
        EXPECT_EQ(text(ran.object), row[1].toStdString());
    }
}

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
        server.on("GET", "/x", answer(row[0].toInt(), row[1].toStdString()));
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

/// Each row: the reply's head and body, and how the failure's text begins.
TEST(HttpExchange, TellsAWholeReplyFromOneCutShort) {
    for (const QStringList& row : rows(R"(
        HTTP/1.1 200 OK~Content-Length: 7~~{"a":1}            |
        HTTP/1.1 200 OK~~{"a":1}                              |
        HTTP/1.0 200 OK~~{"a":1}                              |
        HTTP/1.1 200 OK~Transfer-Encoding: chunked~~2~{}~0~~  |
        HTTP/1.1 200 OK~Content-Encoding: br~~x               | ctx failed (HTTP 200): the reply has the unknown content coding "br"
        HTTP/1.1 200 OK~Content-Length: 8~~{"a":1}            | ctx failed (HTTP 200):
        HTTP/1.1 200 OK~Content-Le                            | ctx failed
                                                              | ctx failed:
        220 smtp ready~~                                      | ctx failed)")) {
        SCOPED_TRACE(row[0].toStdString());
        const RawServer server(reply(row[0]));
        const Exchanged ran = get(server.url() + "/x");
        EXPECT_EQ(ran.ok, row[1].isEmpty()) << ran.failure;
        EXPECT_THAT(ran.failure, StartsWith(row[1].toStdString()));
    }
}

TEST(HttpExchange, FailsWhenTheConnectionIsReset) {
    for (const char* bytes :
         {"HTTP/1.1 200 OK~Content-Length: 8~~{\"a\":1}", "HTTP/1.1 200 OK~Content-Encoding: br~~x",
          "HTTP/1.1 200 OK~Content-Le", "220 smtp ready~~", ""}) {
        SCOPED_TRACE(bytes);
        const RawServer server(reply(bytes), RawServer::Ending::kReset);
        const Exchanged ran = get(server.url() + "/x");
        EXPECT_FALSE(ran.ok);
        EXPECT_THAT(ran.failure, StartsWith("ctx failed"));
    }
}

/// A repeated creation would leave a second invite or token that nobody was told of.
TEST(HttpExchange, SendsACreationOnceWhenTheAnswerIsLost) {
    for (const QByteArray& body : {QByteArray(), QByteArray("{}")}) {
        const RawServer server(std::string{});
        const QUrl url(server.url() + "/x");
        EXPECT_EQ(run({.method = "POST", .url = url, .body = body}).failure,
                  "ctx failed: Connection closed");
        EXPECT_EQ(server.served(), 1);
    }
}

/// Such a file would otherwise be installed as if it were whole: without a length only the
/// compressed stream itself knows where it ends.
TEST(HttpExchange, NoticesThatACompressedStreamIsCutShortOrDamaged) {
    const std::string packed = deflated();
    std::string damaged = packed;
    damaged[damaged.size() - 1] ^= 1;  // the checksum
    for (const std::string& tail :
         {"\r\n" + packed.substr(0, packed.size() / 2),
          "\r\n" + packed.substr(0, packed.size() - 1), "\r\n" + damaged, std::string("\r\nplain"),
          "Content-Length: 99999\r\n\r\n" + packed}) {
        const RawServer server(kDeflated + tail);
        std::string got;
        const Exchanged ran = get(server.url() + "/x", into(got));
        EXPECT_FALSE(ran.ok);
        EXPECT_THAT(ran.failure, StartsWith("ctx failed (HTTP 200): "));
    }
    const RawServer server(kDeflated + "\r\n" + damaged);
    EXPECT_EQ(get(server.url() + "/x").failure,
              "ctx failed (HTTP 200): the compressed reply is damaged");
    const RawServer cutting(kDeflated + "\r\n" + packed.substr(0, 99));
    EXPECT_EQ(get(cutting.url() + "/x").failure, "ctx failed (HTTP 200): the reply is cut short");
}

TEST(HttpExchange, UnpacksWhatAServerPackedUnasked) {
    const RawServer server(kDeflated + "\r\n" + deflated());
    std::string got;
    EXPECT_TRUE(get(server.url() + "/x", into(got)).ok);
    EXPECT_TRUE(got == kLargeObject) << got.size();
    const Exchanged ran = get(server.url() + "/x");
    EXPECT_EQ(ran.object["a"].toString().size(), 11 << 20) << ran.failure;
}

TEST(HttpExchange, FollowsAReadWithinItsOrigin) {
    for (const int status : {301, 303, 308}) {
        FakeServer server;
        server.on("GET", "/old", redirectTo("/new?a=%2F", status));
        server.onJson("GET", "/new?a=%2F", json("{'a':1}"));
        EXPECT_EQ(text(get(server.url() + "/old").object), "{'a':1}");
        ASSERT_THAT(server.lines(), ElementsAre("GET /old", "GET /new?a=%2F"));
        EXPECT_EQ(server.requests()[0].header("Authorization"), "Bearer t");
        EXPECT_EQ(server.requests()[1].header("Authorization"), "Bearer t");
    }
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

TEST(HttpExchange, DoesNotTurnAChangeIntoARead) {
    for (const char* method : {"POST", "PUT", "DELETE"}) {
        for (const int status : {301, 302, 303}) {
            FakeServer server;
            server.on(method, "/old", redirectTo("/new", status));
            const Exchanged ran = run({.method = method, .url = QUrl(server.url() + "/old")});
            EXPECT_FALSE(ran.ok);
            EXPECT_EQ(ran.failure, "ctx failed (HTTP " + std::to_string(status) +
                                       "): the server redirects to \"/new\"");
            EXPECT_EQ(server.lines().size(), 1U);
        }
    }
}

TEST(HttpExchange, RepeatsAChangeWithItsBody) {
    for (const int status : {307, 308}) {
        FakeServer server;
        for (const char* method : {"POST", "PUT", "DELETE"}) {
            server.on(method, "/old", redirectTo("/new", status));
            server.onJson(method, "/new", {});
        }
        QBuffer file;
        file.setData("from a device");
        file.open(QIODevice::ReadOnly);
        const QUrl url(server.url() + "/old");
        EXPECT_TRUE(run({.method = "POST", .url = url, .contentType = "a/b", .body = "x"}).ok);
        EXPECT_TRUE(
            run({.method = "PUT", .url = url, .contentType = "c/d", .bodyDevice = &file}).ok);
        EXPECT_TRUE(run({.method = "DELETE", .url = url}).ok);
        std::vector<std::string> second;
        for (const SeenRequest& seen : server.requests()) {
            if (seen.target == "/new") {
                second.push_back(seen.method + ' ' + seen.header("Content-Type") + ' ' + seen.body);
            }
        }
        EXPECT_THAT(second, ElementsAre("POST a/b x", "PUT c/d from a device", "DELETE (none) "));
    }
}

TEST(HttpExchange, EndsARedirectLoop) {
    FakeServer server;
    server.on("GET", "/a", redirectTo("/b", 302));
    server.on("GET", "/b", redirectTo("/a", 302));
    const Exchanged ran = get(server.url() + "/a");
    EXPECT_THAT(ran.failure, StartsWith("ctx failed (HTTP 302): "));
    EXPECT_LE(server.lines().size(), 25U);
}

TEST(HttpExchange, SpeaksHttpOnly) {
    FakeServer server;
    for (const char* target : {"file:///etc/hostname", "ftp://127.0.0.1/x",
                               "data:application/json,{}", "", "http://[broken"}) {
        SCOPED_TRACE(target);
        server.on("GET", "/x", redirectTo(target, 302));
        const Exchanged redirected = get(server.url() + "/x");
        EXPECT_FALSE(redirected.ok);
        EXPECT_THAT(redirected.failure, StartsWith("ctx failed (HTTP 302): "));
        const Exchanged direct = get(target);
        EXPECT_FALSE(direct.ok);
        EXPECT_THAT(direct.failure, StartsWith("ctx failed: "));
    }
}

TEST(HttpExchange, StreamsTheBodyOfASuccess) {
    std::string large;
    for (int i = 0; large.size() < (3 << 20); ++i) {
        large += std::to_string(i) + ' ';
    }
    FakeServer server;
    server.on("GET", "/old", redirectTo("/large", 302));
    server.onBytes("GET", "/large", large);
    server.on("GET", "/packed", answer(200, kLargeObject, "application/json"));
    server.onBytes("GET", "/empty", "");
    std::string got;
    EXPECT_TRUE(get(server.url() + "/old", into(got)).ok);
    EXPECT_TRUE(got == large) << got.size();
    EXPECT_TRUE(get(server.url() + "/packed", into(got)).ok);
    EXPECT_TRUE(got == kLargeObject) << got.size();
    EXPECT_TRUE(get(server.url() + "/empty", into(got)).ok);
    EXPECT_EQ(got, "");
}

TEST(HttpExchange, StreamsNothingOfAFailure) {
    FakeServer server;
    server.onJson("GET", "/x", json("{'error':'gone'}"), 410);
    server.onBytes("GET", "/large", std::string(5 << 20, 'x'));
    int calls = 0;
    const auto refuse = [&calls](const QByteArray&) {
        ++calls;
        return false;
    };
    EXPECT_EQ(get(server.url() + "/x", refuse).failure, "ctx failed (HTTP 410): gone");
    EXPECT_EQ(calls, 0);
    EXPECT_FALSE(get(server.url() + "/large", refuse).ok);
    EXPECT_EQ(calls, 1);
}

}  // namespace quorvelle::testing
