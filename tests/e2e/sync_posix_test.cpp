#include "support/qt_printers.h"
#include "support/sync_fixture.h"

namespace quorvelle::testing {
namespace {

using FullDisk = SyncTest;

INSTANTIATE_TEST_SUITE_P(Modes, FullDisk, ::testing::Bool(),
                         [](const auto& mode) { return mode.param ? "json" : "text"; });

TEST_P(FullDisk, EndsASyncWithNothingInstalled) {
    publish(server, "stable", "b", {{"big", QByteArray(500000, 'x')}});
    QStringList words{"--fsize=100000", "--", quorvelleProgram(), "sync"};
    words += GetParam() ? QStringList("--json") : QStringList();
    expectResult(box.runProgram("prlimit", words), "failed", fetching("b", {"big"}),
                 "'app': could not finalize " + box.path("apps/.quorvelle/app.staging/big"));
    EXPECT_EQ(installed(), QStringList("(missing)"));
    EXPECT_EQ(state(), QStringList("app.staging"));
}

}  // namespace
}  // namespace quorvelle::testing
