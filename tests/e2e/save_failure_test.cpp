#include <gmock/gmock.h>

#include "e2e/save_failures.h"
#include "support/outcomes.h"
#include "support/platform.h"
#include "support/qt_printers.h"

namespace quorvelle::testing {
namespace {

TEST(SaveFailure, OfADirectoryInTheFilesPlace) {
    const Sandbox box;
    box.write("config/config.json/kept", "kept");
    expectSavesFail(box, runPlainly, false);
}

TEST(SaveFailure, OfAFileInTheFoldersPlace) {
    const Sandbox box;
    box.write("config", "kept");
    expectSavesFail(box, runPlainly, false);
}

TEST(SaveFailure, OfAFileThatCannotBeRead) {
    const Sandbox box;
    box.write("config/config.json", kJoined);
    {
        const Held held(box.configPath(), Held::From::kReads);
        expectSavesFail(box, runObeyingPermissions, false);
    }
    EXPECT_EQ(box.read("config/config.json"), kJoined);
}

}  // namespace
}  // namespace quorvelle::testing
