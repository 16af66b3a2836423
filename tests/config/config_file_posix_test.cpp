#include <gtest/gtest.h>

#include "config/config_file.h"
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

}  // namespace quorvelle::testing
