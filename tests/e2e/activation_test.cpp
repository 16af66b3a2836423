#include "support/sync_fixture.h"

namespace quorvelle::testing {
namespace {

class Activation : public SyncTest {
protected:
    /// Build b1 in place, build b2 staged, the install directory movable again.
    void blockBuildTwo() {
        publish(server, "stable", "b1", {{"a", "one"}});
        expectSync("synced", whole("b1", {"a"}), synced("b1", 1, 3));
        publish(server, "stable", "b2", {{"a", "two"}, {"b", "two"}});
        {
            const Held held(box.path("apps/app"), Held::From::kMoves);
            expectResult(runObeyingPermissions(box, {"sync"}), "blocked", whole("b2", {"a", "b"}),
                         inUse("b2"));
        }
        server.forget();
    }
};

const QStringList kBoth{"a=two", "b=two"};

TEST_F(Activation, OfFilesInUseIsRetriedWithoutADownload) {
    blockBuildTwo();
    EXPECT_EQ(installed(), QStringList("a=one"));
    EXPECT_EQ(state(), (QStringList{"app.installed.json", "app.staged.json", "app.staging"}));
    EXPECT_EQ(object(stateBytes(".staged.json")),
              object(R"({"schema_version":1,"build":"b2","channel":"stable","total_size":6})"));
    {
        const Held held(box.path("apps/app"), Held::From::kMoves);
        writeState(".old/leftover", "x");
        expectResult(runObeyingPermissions(box, {"sync"}), "blocked", retrying("b2"), inUse("b2"));
        expectResult(runObeyingPermissions(box, args("sync --force")), "blocked", retrying("b2"),
                     inUse("b2"));
        EXPECT_EQ(state(), (QStringList{"app.installed.json", "app.staged.json", "app.staging"}));
    }
    expectSync("synced", retrying("b2"), retried("b2"));
    EXPECT_THAT(server.lines(), Each("GET /api/channels/stable"));
    EXPECT_EQ(installed(), kBoth);
    EXPECT_EQ(state(), QStringList("app.installed.json"));
    expectSync("current", {kChecking}, upToDate("b2"));
}

TEST_F(Activation, ThatCannotBeRecordedWaitsForTheNextBuild) {
    publish(server, "stable", "b1", {{"a", "one"}});
    writeState(".installed.json/in the way", "x");
    expectSync("failed", whole("b1", {"a"}),
               "'app': build activated, but could not record its id - next sync will re-download");
    EXPECT_EQ(installed(), QStringList("a=one"));
    ASSERT_TRUE(QDir(box.path("apps/.quorvelle/app.installed.json")).removeRecursively());
    expectSync("blocked", retrying("b1"), notActivated("b1"));
    expectSync("blocked", retrying("b1"), notActivated("b1"), args("sync --force"));
    EXPECT_EQ(installed(), QStringList("a=one"));
    publish(server, "stable", "b2", {{"a", "two"}, {"b", "two"}});
    expectSync("synced", whole("b2", {"a", "b"}), synced("b2", 2, 6));
    EXPECT_EQ(installed(), kBoth);
    EXPECT_EQ(state(), QStringList("app.installed.json"));
}

TEST_F(Activation, NeverMixesTwoBuilds) {
    blockBuildTwo();
    publish(server, "stable", "b3", {{"a", "three"}, {"c", "three"}});
    server.onJson("GET", fileTarget("b3", "c"), {{"error", "lost"}}, 500);
    expectSync("failed", fetching("b3", {"a", "c"}),
               "'app': download of c failed (HTTP 500): lost");
    publish(server, "stable", "b2", {{"a", "two"}, {"b", "two"}});
    expectSync("synced", whole("b2", {"a", "b"}), synced("b2", 2, 6));
    EXPECT_EQ(installed(), kBoth);
}

TEST_F(Activation, DownloadsWhatTheOtherEngineStaged) {
    publish(server, "stable", "b2", {{"a", "two"}, {"b", "two"}});
    writeState(".staging/d/leftover", "x");
    writeState(".staging.build", "b2");
    writeState(".old/leftover", "x");
    writeState(".staged.json", R"({"build":"b2","channel":"stable","total_size":1})");
    writeState(".installed.json", "torn {");
    box.write("apps/app/a", "zero");
    expectSync("synced", whole("b2", {"a", "b"}), synced("b2", 2, 6));
    EXPECT_EQ(installed(), kBoth);
    EXPECT_EQ(state(), QStringList("app.installed.json"));
}

TEST_F(Activation, TakesNoSubscriptionsDirectoryForTheStateOfAnother) {
    subscribe({subscription("app", "stable"), subscription("app.old", "other"),
               subscription("app.staging", "other")});
    publish(server, "stable", "b1", {});
    box.write("apps/app.installed.json", R"({"build":"b1"})");
    box.write("apps/app.old/a", "one");
    box.write("apps/app.staging/a", "one");
    expectSync("current", {kChecking}, upToDate("b1"), args("sync --name app"));
    EXPECT_EQ(box.tree("apps"), (QStringList{R"(.quorvelle/app.installed.json={"build":"b1"})",
                                             "app.old/a=one", "app.staging/a=one"}));
}

TEST_F(Activation, KeepsTheOnlyCopyUntilABuildIsInPlace) {
    publish(server, "stable", "b2", {{"a", "two"}});
    server.onJson("GET", fileTarget("b2", "a"), {{"error", "lost"}}, 404);
    writeState(".old/a", "one");
    expectSync("failed", fetching("b2", {"a"}), "'app': download of a failed (HTTP 404): lost");
    EXPECT_EQ(stateBytes(".old/a"), "one");
    publish(server, "stable", "b2", {{"a", "two"}});
    expectSync("synced", whole("b2", {"a"}), synced("b2", 1, 3));
    EXPECT_EQ(state(), QStringList("app.installed.json"));
}

/// While the first one waits for its file.
TEST_F(Activation, HappensInOneProcessAtATime) {
    subscribe({subscription("app", "stable"), subscription("kit", "none")});
    publish(server, "stable", "b1", {{"a", "one"}});
    server.onJson("GET", "/api/channels/none", {});
    server.on("GET", fileTarget("b1", "a"), [this](const auto&, httplib::Response& response) {
        server.onBytes("GET", fileTarget("b1", "a"), "one");
        server.forget();
        expectSync("failed", {}, "a sync is already running", args("sync --name app"));
        EXPECT_THAT(server.lines(), ElementsAre());
        EXPECT_EQ(box.run(args("sync --name kit")).code, 0);
        response.set_content("one", "application/octet-stream");
    });
    expectSync("synced", whole("b1", {"a"}), synced("b1", 1, 3), args("sync --name app"));
    EXPECT_EQ(state(), QStringList("app.installed.json"));
    expectSync("current", {kChecking}, upToDate("b1"), args("sync --name app"));
}

}  // namespace
}  // namespace quorvelle::testing
