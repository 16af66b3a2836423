#include "support/qt_printers.h"
#include "support/sync_fixture.h"

namespace quorvelle::testing {
namespace {

using LockEntry = SyncTest;

INSTANTIATE_TEST_SUITE_P(Modes, LockEntry, ::testing::Bool(),
                         [](const auto& mode) { return mode.param ? "json" : "text"; });

TEST_P(LockEntry, ThatCannotBeLockedEndsTheSync) {
    writeState(".lock/in the way", "");
    expectSync("failed", {},
               "'app': cannot lock " + box.path("apps/.quorvelle/app.lock") + ": Is a directory");
    EXPECT_EQ(server.lines().size(), 0U);
}

}  // namespace
}  // namespace quorvelle::testing
