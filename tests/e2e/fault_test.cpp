#include <cerrno>
#include <iostream>

#include "support/faulty_run.h"
#include "support/power_cut.h"
#include "support/sync_world.h"

namespace quorvelle::testing {

namespace {

const QStringList kSync{"sync"};
const QString kStagedMarker = "games/.quorvelle/app.staged.json";
const QString kStagingBuild = "games/.quorvelle/app.staging.build";

struct SyncCase {
    const char* name;
    Engine engine;
    Start start;
    const char* before;
};

void PrintTo(const SyncCase& row, std::ostream* out) {
    *out << row.name;
}

class HinderedSync : public ::testing::TestWithParam<SyncCase> {
protected:
    FaultyOutcome syncFromStart(Sandbox& sandbox, Fault fault) const {
        world.prepare(sandbox, GetParam().start);
        return runFaulty(sandbox, kSync, fault);
    }

    /// Calls of a sync that nothing hinders.
    int callsInAll() const {
        Sandbox sandbox;
        const FaultyOutcome whole = syncFromStart(sandbox, {});
        EXPECT_EQ(whole.code, 0) << whole.err.toStdString();
        EXPECT_EQ(standing(sandbox), "build 2");
        EXPECT_GT(whole.calls, 30);
        std::cout << whole.calls << " calls\n";
        return whole.code == 0 ? whole.calls : 0;
    }

    void expectWholeAfterKill(const Sandbox& sandbox) const {
        EXPECT_THAT(standing(sandbox),
                    AnyOf(GetParam().before, "build 2", "old: build 1, staging: build 2",
                          "kept: theirs, staging: build 2"));
    }

    void failEachCallWith(int error) const {
        for (const int call : faultPoints(callsInAll())) {
            Sandbox sandbox;
            const FaultyOutcome faulty = syncFromStart(sandbox, {.call = call, .error = error});
            SCOPED_TRACE("call " + std::to_string(call) + " failed, " + faulty.failed);
            SCOPED_TRACE((faulty.out + faulty.err).toStdString());
            ASSERT_NE(faulty.failed, "none");
            // A configuration that cannot be read counts as empty.
            EXPECT_THAT(faulty.code,
                        AnyOf(0, 2, 3, faulty.err.startsWith("no subscriptions") ? 1 : 0));
            EXPECT_THAT(standing(sandbox),
                        AnyOf(faulty.code == 0 ? "build 2" : GetParam().before, "build 2"));
            if (GetParam().engine == Engine::kCargo &&
                faulty.err.contains("build activated, but could not record its id") &&
                sandbox.run(kSync).code == 3) {
                // The one state that lasts until the channel moves on.
                EXPECT_EQ(standing(sandbox), "build 2");
            } else {
                expectConvergence(sandbox, GetParam().engine, GetParam().start, true);
            }
        }
    }

    SyncWorld world{GetParam().engine};
};

/// How often the file of staging that was flushed most often was.
qsizetype mostFlushes(const QString& trace) {
    QStringList staged;
    QStringList flushed;
    QFile calls(trace + "/calls");
    EXPECT_TRUE(calls.open(QIODevice::ReadOnly));
    for (const QString& line : QString::fromUtf8(calls.readAll()).split(u'\n')) {
        const QStringList words = line.split(u'\t');
        if (words[0] == "name" && words[2].contains("/app.staging/")) {
            staged.append(words[1]);
        } else if (words[0] == "bytes") {
            flushed.append(words[1]);
        }
    }
    qsizetype most = 0;
    for (const QString& file : staged) {
        most = qMax(most, flushed.count(file));
    }
    return most;
}

class KilledSync : public HinderedSync {};
class FailingSync : public HinderedSync {};
class CutSync : public HinderedSync {};

}  // namespace

TEST_P(FailingSync, TellsTheTruthOfAReadWriteErrorAndIsMadeGoodByTheNext) {
    failEachCallWith(EIO);
}

TEST_P(FailingSync, TellsTheTruthOfAFullDiskAndIsMadeGoodByTheNext) {
    failEachCallWith(ENOSPC);
}

TEST_P(KilledSync, LeavesOneWholeBuildWhenKilledAndIsMadeGoodByTheNext) {
    for (const int call : faultPoints(callsInAll())) {
        SCOPED_TRACE("killed before call " + std::to_string(call));
        Sandbox sandbox;
        const FaultyOutcome killed = syncFromStart(sandbox, {.call = call});
        ASSERT_TRUE(killed.wasKilled()) << killed.code << killed.out.toStdString();
        expectWholeAfterKill(sandbox);
        expectConvergence(sandbox, GetParam().engine, GetParam().start);
    }
}

TEST_P(KilledSync, IsMadeGoodAlsoAfterAKillOfTheRecovery) {
    int kills = 0;
    for (const int call : faultPoints(callsInAll(), 2)) {
        const int second = 1 + call * 13 % 40;
        SCOPED_TRACE("killed before calls " + std::to_string(call) + ", " + std::to_string(second));
        Sandbox sandbox;
        syncFromStart(sandbox, {.call = call});
        kills += runFaulty(sandbox, kSync, {.call = second}).wasKilled() ? 1 : 0;
        expectWholeAfterKill(sandbox);
        expectConvergence(sandbox, GetParam().engine, GetParam().start);
    }
    EXPECT_GT(kills, 0);
    std::cout << kills << " pairs of kills\n";
}

TEST_P(CutSync, IsMadeGoodByTheNext) {
    Sandbox sandbox;
    world.prepare(sandbox, GetParam().start);
    PowerCut cut(sandbox, "games", {".quorvelle"});
    const QString trace = sandbox.path("trace");
    ASSERT_TRUE(QDir().mkpath(trace));
    sandbox.environment.insert("FAULT_TRACE", trace);
    ASSERT_EQ(runFaulty(sandbox, kSync, {}).code, 0);
    EXPECT_LE(mostFlushes(trace), 1);
    const std::set<DiskState> states = cut.states(trace);
    std::cout << states.size() << " states\n";
    EXPECT_GT(states.size(), 20U);
    for (const DiskState& state : states) {
        Sandbox after;
        world.prepare(after, Start::kNothing);
        QStringList names;
        for (const auto& [name, bytes] : state) {
            names.append(name);
            const QString path = "games/" + name;
            if (path.endsWith(u'/')) {
                QDir().mkpath(after.path(path));
            } else {
                after.write(path, bytes);
            }
        }
        SCOPED_TRACE(names.join(u' ').toStdString());
        expectConvergence(after, GetParam().engine, GetParam().start);
    }
}

const SyncCase kStarts[] = {{"FirstInstall", Engine::kCargo, Start::kNothing, "nothing"},
                            {"Update", Engine::kCargo, Start::kBuild1, "build 1"},
                            {"RetryOfStaged", Engine::kCargo, Start::kStaged, "build 1"},
                            {"TideFirstInstall", Engine::kTide, Start::kNothing, "nothing"},
                            {"TideUpdate", Engine::kTide, Start::kBuild1, "build 1"},
                            {"TideRetryOfStaged", Engine::kTide, Start::kStaged, "build 1"},
                            {"OverTheirs", Engine::kCargo, Start::kTheirs, "theirs"},
                            {"TideOverTheirs", Engine::kTide, Start::kTheirs, "theirs"},
                            {"LegacyState", Engine::kCargo, Start::kLegacy, "build 1"}};

std::string nameOf(const ::testing::TestParamInfo<SyncCase>& row) {
    return row.param.name;
}

INSTANTIATE_TEST_SUITE_P(Starts, CutSync, ValuesIn(kStarts, kStarts + 8), nameOf);
INSTANTIATE_TEST_SUITE_P(Starts, KilledSync, ValuesIn(kStarts), nameOf);
// A state that could not be moved stays where earlier releases kept it.
INSTANTIATE_TEST_SUITE_P(Starts, FailingSync, ValuesIn(kStarts, kStarts + 8), nameOf);

class FaultyDownload : public ::testing::TestWithParam<Engine> {};

TEST_P(FaultyDownload, NeverLeavesAStagedMarkerOverFilesOfAnotherBuild) {
    SyncWorld world(GetParam());
    world.breakDownload();
    const auto syncOverStaged = [&](Sandbox& sandbox, Fault fault) {
        world.prepare(sandbox, Start::kStaged);
        sandbox.write(kStagedMarker, R"({"build": "waiting"})");
        sandbox.write(kStagingBuild, "waiting");
        return runFaulty(sandbox, kSync, fault);
    };
    Sandbox untroubled;
    const int calls = syncOverStaged(untroubled, {}).calls;
    ASSERT_GT(calls, 30);
    for (const int call : faultPoints(calls)) {
        for (const int error : {0, EIO}) {
            SCOPED_TRACE("call " + std::to_string(call) + ", error " + std::to_string(error));
            Sandbox sandbox;
            EXPECT_NE(syncOverStaged(sandbox, {.call = call, .error = error}).code, 0);
            EXPECT_EQ(standing(sandbox), "build 1");
            if (sandbox.read(kStagedMarker) != "(missing)") {
                EXPECT_EQ(stagedFiles(sandbox), "build 2");
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Engines, FaultyDownload, Values(Engine::kCargo, Engine::kTide),
                         [](const auto& row) {
                             return row.param == Engine::kTide ? "Tide" : "Cargo";
                         });

}  // namespace quorvelle::testing
