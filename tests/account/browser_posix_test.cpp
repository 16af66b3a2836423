#include "account/browser.h"

#include <gtest/gtest.h>

#include <QFile>

#include "support/temporary_config.h"

namespace quorvelle::testing {

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
