#include <gtest/gtest.h>
#include <sys/stat.h>

#include "config/config_file.h"
#include "support/platform.h"
#include "support/qt_printers.h"
#include "support/temporary_config.h"

namespace quorvelle::testing {

TEST(ConfigFile, StandsInTheUsersFolderWhenNoneIsChosen) {
    TemporaryConfig config;
    const ScopedVariable home("XDG_CONFIG_HOME", "/home/ada/.config");
    for (const QByteArray& unset : {QByteArray(""), QByteArray()}) {
        config.folder.set(unset);
        EXPECT_EQ(config::path(), QString("/home/ada/.config/Quorvelle/Quorvelle/config.json"));
    }
}

TEST(ConfigFile, IsPrivateWithoutAChangeOfTheUmask) {
    const TemporaryConfig config;
    const mode_t before = ::umask(0022);
    ASSERT_TRUE(config::save({}));
    EXPECT_TRUE(isOwnersAlone(config::path()));
    EXPECT_EQ(::umask(before), 0022U);
}

}  // namespace quorvelle::testing
