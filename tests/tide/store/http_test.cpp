#include "tide/store/http.h"

#include <gmock/gmock.h>

#include "support/fake_server.h"
#include "support/raw_server.h"

namespace tide {
namespace {

using namespace quorvelle::testing;
using ::testing::ElementsAre;

struct Got {
    bool ok = false;
    std::string body = "kept";
    long status = -1;
    std::string err;
};

Got get(const std::string& url, const std::string& token = {}, const HttpOptions& options = {}) {
    Got got;
    got.ok = httpGet(url, got.body, got.status, &got.err, token, options);
    return got;
}

void expectFailure(const Got& got, const std::string& err) {
    EXPECT_FALSE(got.ok);
    EXPECT_EQ(got.err, err);
    EXPECT_EQ(got.body, "kept");
    EXPECT_EQ(got.status, -1);
}

FakeServer::Answer redirectTo(const std::string& url) {
    return [url](const httplib::Request&, httplib::Response& response) {
        response.set_redirect(url, 302);
    };
}

class HttpGetTest : public ::testing::Test {
protected:
    std::string url(const std::string& target) const { return server.url().toStdString() + target; }

    FakeServer server;
};

TEST_F(HttpGetTest, ReturnsBodyAndStatusWhateverTheStatus) {
    const std::string bytes("\0\r\n\xff", 4);
    server.onBytes("GET", "/a%20b?x=%2F", bytes);
    Got got = get(url("/a%20b?x=%2F"));
    EXPECT_TRUE(got.ok) << got.err;
    EXPECT_EQ(got.body, bytes);
    EXPECT_EQ(got.status, 200);
    EXPECT_EQ(server.requests()[0].header("User-Agent"), "quorvelle-tide/0.1");
    EXPECT_EQ(server.requests()[0].header("Authorization"), "(none)");

    got = get(url("/missing"));
    EXPECT_TRUE(got.ok);
    EXPECT_EQ(got.status, 404);
    EXPECT_EQ(got.err, "");
}

TEST_F(HttpGetTest, SendsTheTokenToTheFirstOriginAlone) {
    FakeServer other;
    server.on("GET", "/start", redirectTo("/same"));
    server.on("GET", "/same", redirectTo((other.url() + "/other").toStdString()));
    other.onBytes("GET", "/other", "there");
    const Got got = get(url("/start"), "t0ken");
    EXPECT_EQ(got.body, "there") << got.err;
    EXPECT_THAT(server.lines(), ElementsAre("GET /start", "GET /same"));
    EXPECT_EQ(server.requests()[0].header("Authorization"), "Bearer t0ken");
    EXPECT_EQ(server.requests()[1].header("Authorization"), "Bearer t0ken");
    ASSERT_THAT(other.lines(), ElementsAre("GET /other"));
    EXPECT_EQ(other.requests()[0].header("Authorization"), "(none)");
}

TEST_F(HttpGetTest, RefusesOtherSchemesAndEndlessRedirects) {
    for (const char* target :
         {"file:///etc/hostname", "ftp://127.0.0.1/x", "gopher://127.0.0.1/"}) {
        expectFailure(get(target), "curl: Unsupported protocol");
        server.on("GET", "/start", redirectTo(target));
        expectFailure(get(url("/start")), "curl: Unsupported protocol");
    }
    server.on("GET", "/loop", redirectTo("/loop"));
    expectFailure(get(url("/loop")), "curl: Number of redirects hit maximum amount");
}

TEST_F(HttpGetTest, SaysHowATransferBroke) {
    const std::string nobody = FakeServer().url().toStdString();
    expectFailure(get(nobody), "curl: Couldn't connect to server");
    expectFailure(get("http://"), "curl: URL using bad/illegal format or missing URL");

    const RawServer silent({""});
    expectFailure(get(silent.url().toStdString()),
                  "curl: Server returned nothing (no headers, no data)");
    const std::string cutShort = "HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\nshort";
    const RawServer closing({cutShort});
    expectFailure(get(closing.url().toStdString()), "curl: Transferred a partial file");
    const RawServer resetting({cutShort}, RawServer::Ending::kReset);
    EXPECT_FALSE(get(resetting.url().toStdString()).ok);
}

TEST_F(HttpGetTest, StopsAtTheBound) {
    const HttpOptions fourBytes{.maxBody = 4};
    server.onBytes("GET", "/fits", "four");
    EXPECT_EQ(get(url("/fits"), {}, fourBytes).body, "four");
    server.onBytes("GET", "/long", "five!");
    expectFailure(get(url("/long"), {}, fourBytes),
                  "curl: Failed writing received data to disk/application");
}

TEST_F(HttpGetTest, KeepsConnectionsOpenOnlyInACache) {
    std::set<int> connections;
    server.on("GET", "/k", [&](const httplib::Request& request, httplib::Response& response) {
        connections.insert(request.remote_port);
        response.set_content("bytes", "");
    });
    ConnectionCache cache;
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(get(url("/k"), {}, {.connections = &cache}).body, "bytes");
    }
    EXPECT_EQ(connections.size(), 1u);
    get(url("/k"));
    get(url("/k"));
    EXPECT_EQ(connections.size(), 3u);
}

}  // namespace
}  // namespace tide
