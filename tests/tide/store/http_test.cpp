#include "tide/store/http.h"

#include <gmock/gmock.h>

#include "support/fake_server.h"
#include "support/raw_server.h"

namespace tide {
namespace {

using namespace quorvelle::testing;
using ::testing::ElementsAre;
using ::testing::StartsWith;

/// Status and body of the reply, or why there is none; the two then stay what they were.
std::string get(const std::string& url, const std::string& token = {},
                const HttpOptions& options = {}) {
    std::string body = "kept";
    long status = -1;
    std::string err;
    const bool completed = httpGet(url, body, status, &err, token, options);
    const std::string reply = std::to_string(status) + ' ' + body;
    EXPECT_TRUE(completed || reply == "-1 kept") << reply;
    return completed ? reply : err;
}

class HttpGetTest : public ::testing::Test {
protected:
    std::string url(const std::string& target) const { return server.url().toStdString() + target; }

    FakeServer server;
};

TEST_F(HttpGetTest, ReturnsBodyAndStatusWhateverTheStatus) {
    const std::string bytes("\0\r\n\xff", 4);
    server.onBytes("GET", "/a%20b?x=%2F", bytes);
    EXPECT_EQ(get(url("/a%20b?x=%2F")), "200 " + bytes);
    EXPECT_EQ(server.requests()[0].header("User-Agent"), "quorvelle-tide/0.1");
    EXPECT_EQ(server.requests()[0].header("Authorization"), "(none)");
    EXPECT_THAT(get(url("/missing")), StartsWith("404 "));
}

TEST_F(HttpGetTest, SendsTheTokenToTheFirstOriginAlone) {
    FakeServer other;
    server.on("GET", "/start", redirectTo("/same"));
    server.on("GET", "/same", redirectTo(other.url() + "/other"));
    other.onBytes("GET", "/other", "there");
    EXPECT_EQ(get(url("/start"), "t0ken"), "200 there");
    EXPECT_THAT(server.lines(), ElementsAre("GET /start", "GET /same"));
    EXPECT_EQ(server.requests()[0].header("Authorization"), "Bearer t0ken");
    EXPECT_EQ(server.requests()[1].header("Authorization"), "Bearer t0ken");
    ASSERT_THAT(other.lines(), ElementsAre("GET /other"));
    EXPECT_EQ(other.requests()[0].header("Authorization"), "(none)");
}

TEST_F(HttpGetTest, RefusesOtherSchemesAndEndlessRedirects) {
    for (const char* target :
         {"file:///etc/hostname", "ftp://127.0.0.1/x", "gopher://127.0.0.1/"}) {
        EXPECT_EQ(get(target), "curl: Unsupported protocol");
        server.on("GET", "/start", redirectTo(target));
        EXPECT_EQ(get(url("/start")), "curl: Unsupported protocol");
    }
    server.on("GET", "/loop", redirectTo("/loop"));
    EXPECT_EQ(get(url("/loop")), "curl: Number of redirects hit maximum amount");
}

TEST_F(HttpGetTest, SaysHowATransferBroke) {
    const std::string nobody = FakeServer().url().toStdString();
    EXPECT_EQ(get(nobody), "curl: Couldn't connect to server");
    EXPECT_EQ(get("http://"), "curl: URL using bad/illegal format or missing URL");

    std::string endless;
    while (endless.size() < (2 << 20)) {
        endless += "X: " + std::string(1000, 'x') + "\r\n";
    }
    for (const char* begin : {"", "Transfer-Encoding: chunked\r\n\r\n0\r\n"}) {
        const RawServer raw("HTTP/1.1 200 OK\r\n" + (begin + endless) + "\r\n");
        EXPECT_THAT(get(raw.url().toStdString(), {}, {.sleep = [](auto) {}}), StartsWith("curl: "));
    }
}

TEST_F(HttpGetTest, TriesAgainWhereThatMayHelp) {
    struct Row {
        std::vector<std::string> replies;
        const char* outcome;
        std::vector<int> pausesMs;
    };
    const std::string whole = "HTTP/1.1 200 OK\r\nContent-Length: 5\r\n\r\nwhole";
    const std::string cutShort = "HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\nshort";
    const auto busy = [](const char* header) {
        return std::string("HTTP/1.1 503 Busy\r\nContent-Length: 0\r\n") + header + "\r\n";
    };
    for (const Row& row : {
             Row{{whole}, "200 whole", {}},
             Row{{"", cutShort, whole}, "200 whole", {500, 1000}},
             Row{{"", "", ""}, "curl: Server returned nothing (no headers, no data)", {500, 1000}},
             Row{{"", "", cutShort}, "curl: Transferred a partial file", {500, 1000}},
             Row{{busy("Retry-After: 99\r\n"), busy("Retry-After: 9223372036854775807\r\n"), whole},
                 "200 whole",
                 {10000, 10000}},
             Row{{busy("")}, "503 ", {}},
             Row{{busy("Retry-After: 3\r\n"), busy("Retry-After: 2\r\n"),
                  busy("Retry-After: 1\r\n")},
                 "503 ",
                 {3000, 2000}},
         }) {
        const RawServer raw(row.replies);
        std::vector<int> pauses;
        const HttpOptions options{.sleep = [&](std::chrono::nanoseconds time) {
            pauses.push_back(static_cast<int>(time / std::chrono::milliseconds(1)));
        }};
        EXPECT_EQ(get(raw.url().toStdString(), {}, options), row.outcome);
        EXPECT_EQ(pauses, row.pausesMs);
        EXPECT_EQ(raw.served(), static_cast<int>(row.replies.size()));
    }
}

TEST_F(HttpGetTest, StopsAtTheBound) {
    const HttpOptions fourBytes{.maxBody = 4};
    server.onBytes("GET", "/fits", "four");
    EXPECT_EQ(get(url("/fits"), {}, fourBytes), "200 four");
    server.onBytes("GET", "/long", "five!");
    EXPECT_EQ(get(url("/long"), {}, fourBytes),
              "curl: Failed writing received data to disk/application");
}

}  // namespace
}  // namespace tide
