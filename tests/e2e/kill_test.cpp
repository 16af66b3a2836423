#include <gmock/gmock.h>

#include <iostream>

#include "support/faulty_run.h"
#include "support/sync_world.h"

namespace quorvelle::testing {

namespace {

using ::testing::AnyOf;
using ::testing::Values;

const QStringList kSync{"sync"};

struct KillCase {
    const char* name;
    Engine engine;
    Start start;
    const char* before;
};

void PrintTo(const KillCase& row, std::ostream* out) {
    *out << row.name;
}

class KilledSync : public ::testing::TestWithParam<KillCase> {
protected:
    /// Calls of a sync that nothing hinders.
    int callsInAll() const {
        Sandbox sandbox;
        world.prepare(sandbox, GetParam().start);
        const FaultyOutcome whole = runFaulty(sandbox, kSync, {});
        EXPECT_EQ(whole.code, 0) << whole.err.toStdString();
        EXPECT_EQ(standing(sandbox), "build 2");
        EXPECT_GT(whole.calls, 30);
        return whole.code == 0 ? whole.calls : 0;
    }

    void expectWhole(const Sandbox& sandbox) const {
        EXPECT_THAT(standing(sandbox),
                    AnyOf(GetParam().before, "build 2", "old: build 1, staging: build 2"));
    }

    SyncWorld world{GetParam().engine};
};

}  // namespace

TEST_P(KilledSync, LeavesOneWholeBuildAndIsMadeGoodByTheNext) {
    const int calls = callsInAll();
    int kills = 0;
    for (const int call : faultPoints(calls)) {
        SCOPED_TRACE("killed before call " + std::to_string(call));
        Sandbox sandbox;
        world.prepare(sandbox, GetParam().start);
        const FaultyOutcome killed = runFaulty(sandbox, kSync, {.call = call});
        ASSERT_TRUE(killed.wasKilled()) << killed.code << killed.out.toStdString();
        ++kills;
        expectWhole(sandbox);
        expectConvergence(sandbox, GetParam().engine);
    }
    std::cout << kills << " kill points of " << calls << " calls\n";
}

TEST_P(KilledSync, IsMadeGoodAlsoAfterAKillOfTheRecovery) {
    const int calls = callsInAll();
    int kills = 0;
    for (const int call : faultPoints(calls, 2)) {
        const int second = 1 + call * 13 % 40;
        SCOPED_TRACE("killed before call " + std::to_string(call) + ", then before call " +
                     std::to_string(second));
        Sandbox sandbox;
        world.prepare(sandbox, GetParam().start);
        runFaulty(sandbox, kSync, {.call = call});
        kills += runFaulty(sandbox, kSync, {.call = second}).wasKilled() ? 1 : 0;
        expectWhole(sandbox);
        expectConvergence(sandbox, GetParam().engine);
    }
    EXPECT_GT(kills, 0);
    std::cout << kills << " pairs of kills\n";
}

INSTANTIATE_TEST_SUITE_P(
    Starts, KilledSync,
    Values(KillCase{"FirstInstall", Engine::kCargo, Start::kNothing, "nothing"},
           KillCase{"Update", Engine::kCargo, Start::kBuild1, "build 1"},
           KillCase{"RetryOfStaged", Engine::kCargo, Start::kStaged, "build 1"},
           KillCase{"LegacyState", Engine::kCargo, Start::kLegacy, "build 1"},
           KillCase{"TideFirstInstall", Engine::kTide, Start::kNothing, "nothing"},
           KillCase{"TideUpdate", Engine::kTide, Start::kBuild1, "build 1"},
           KillCase{"TideRetryOfStaged", Engine::kTide, Start::kStaged, "build 1"}),
    [](const auto& row) { return std::string(row.param.name); });

}  // namespace quorvelle::testing
