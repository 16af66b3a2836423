#include <gmock/gmock.h>
#include <sys/resource.h>

#include <QFile>

#include "support/temporary_config.h"
#include "sync/browser.h"
#include "sync/sso_login.h"

namespace quorvelle::testing {

TEST(SsoLoginStart, ReportsThatThereIsNoPort) {
    rlimit before{};
    ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &before), 0);
    const rlimit none{0, before.rlim_max};
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &none), 0);
    SsoLogin login;
    QString url;
    QString error;
    const bool started = login.start("http://a", &url, &error);
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &before), 0);
    EXPECT_FALSE(started);
    EXPECT_THAT(error.toStdString(), ::testing::MatchesRegex("could not open a loopback port: .+"));
}

TEST(Browser, IsOpenedForAddressesOfTheWebAlone) {
    const Sandbox box;
    const ScopedVariable path("PATH", box.path("bin").toUtf8());
    EXPECT_FALSE(openBrowser("http://a/")) << "nothing to open it with";
    box.write("bin/xdg-open", "#!/bin/sh\n");
    QFile::setPermissions(box.path("bin/xdg-open"), QFile::ReadOwner | QFile::ExeOwner);
    for (const char* url : {"http://a/", "HTTPS://a:1/b?port=2"}) {
        EXPECT_TRUE(openBrowser(url)) << url;
    }
    for (const char* url : {"", "a/b", "/bin/sh", "file:///bin/sh", "ftp://a/", "javascript:1",
                            "--help", "http://[/", "httpx://a/"}) {
        EXPECT_FALSE(openBrowser(url)) << url;
    }
}

}  // namespace quorvelle::testing
