#include "account/sso_login.h"

#include <gmock/gmock.h>
#include <sys/resource.h>

namespace quorvelle::testing {

TEST(SsoLoginStart, ReportsThatThereIsNoPort) {
    QString url;
    QString error;
    // Also lets the sanitizers check the type now: they need a descriptor for that.
    EXPECT_TRUE(SsoLogin().start("http://a", &url, &error));
    SsoLogin login;
    rlimit before{};
    ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &before), 0);
    const rlimit none{0, before.rlim_max};
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &none), 0);
    const bool started = login.start("http://a", &url, &error);
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &before), 0);
    EXPECT_FALSE(started);
    EXPECT_THAT(error.toStdString(), ::testing::MatchesRegex("could not open a loopback port: .+"));
}

}  // namespace quorvelle::testing
