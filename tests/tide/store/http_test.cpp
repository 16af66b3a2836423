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
    server.on("GET", "/same", redirectTo(other.url() + "/other"));
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

    std::string endless;
    while (endless.size() < (2 << 20)) {
        endless += "X: " + std::string(1000, 'x') + "\r\n";
    }
    for (const char* begin : {"", "Transfer-Encoding: chunked\r\n\r\n0\r\n"}) {
        const RawServer raw("HTTP/1.1 200 OK\r\n" + (begin + endless) + "\r\n");
        EXPECT_FALSE(get(raw.url().toStdString(), {}, {.sleep = [](auto) {}}).ok) << begin;
    }
}

TEST_F(HttpGetTest, TriesAgainWhereThatMayHelp) {
    struct Row {
        std::vector<std::string> replies;
        const char* err;
        std::vector<int> pausesMs;
    };
    const std::string whole = "HTTP/1.1 200 OK\r\nContent-Length: 5\r\n\r\nwhole";
    const std::string cutShort = "HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\nshort";
    const auto busy = [](const char* header) {
        return std::string("HTTP/1.1 503 Busy\r\nContent-Length: 0\r\n") + header + "\r\n";
    };
    for (const Row& row : {
             Row{{whole}, "", {}},
             Row{{"", cutShort, whole}, "", {500, 1000}},
             Row{{"", "", ""}, "curl: Server returned nothing (no headers, no data)", {500, 1000}},
             Row{{"", "", cutShort}, "curl: Transferred a partial file", {500, 1000}},
             Row{{busy("Retry-After: 99\r\n"), busy("Retry-After: 9223372036854775807\r\n"), whole},
                 "",
                 {10000, 10000}},
             Row{{busy("")}, "503", {}},
             Row{{busy("Retry-After: 3\r\n"), busy("Retry-After: 2\r\n"),
                  busy("Retry-After: 1\r\n")},
                 "503",
                 {3000, 2000}},
         }) {
        const RawServer raw(row.replies);
        std::vector<int> pauses;
        const HttpOptions options{.sleep = [&](std::chrono::nanoseconds time) {
            pauses.push_back(static_cast<int>(time / std::chrono::milliseconds(1)));
        }};
        const Got got = get(raw.url().toStdString(), {}, options);
        if (std::string(row.err) == "503") {
            EXPECT_EQ(got.status, 503);
        } else if (*row.err != '\0') {
            expectFailure(got, row.err);
        } else {
            EXPECT_EQ(got.body, "whole") << got.err;
        }
        EXPECT_EQ(pauses, row.pausesMs);
        EXPECT_EQ(raw.served(), static_cast<int>(row.replies.size()));
    }
}

TEST_F(HttpGetTest, StopsAtTheBound) {
    const HttpOptions fourBytes{.maxBody = 4};
    server.onBytes("GET", "/fits", "four");
    EXPECT_EQ(get(url("/fits"), {}, fourBytes).body, "four");
    server.onBytes("GET", "/long", "five!");
    expectFailure(get(url("/long"), {}, fourBytes),
                  "curl: Failed writing received data to disk/application");
}

}  // namespace
}  // namespace tide
