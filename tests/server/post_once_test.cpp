#include <gtest/gtest.h>

#include "server/requests.h"
#include "support/raw_server.h"
#include "support/temporary_config.h"

namespace quorvelle::testing {

/// A repeated creation would leave a second invite or token that nobody was told of.
TEST(Requests, SendACreationOnceWhenTheAnswerIsLost) {
    const TemporaryConfig config;
    const auto sent = [](auto call) {
        const RawServer server(std::vector<std::string>(8, ""));
        ::testing::internal::CaptureStderr();
        EXPECT_FALSE(call(Server{server.url()}).ok);
        EXPECT_EQ(::testing::internal::GetCapturedStderr(), "x failed: Connection closed\n");
        return server.served();
    };
    EXPECT_EQ(sent([](const Server& url) { return postEmpty(url, "/p", "x"); }), 1);
    EXPECT_EQ(sent([](const Server& url) { return postJson(url, "/p", "x", {}); }), 1);
}

}  // namespace quorvelle::testing
