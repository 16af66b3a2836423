#include "sync/state_folder.h"

#include <QFile>

#include "support/process_runner.h"
#include "sync/markers.h"

namespace quorvelle::testing {

using ::testing::FieldsAre;

namespace {

constexpr auto kInstalled = ".quorvelle/app.installed.json";
constexpr auto kStaged = ".quorvelle/app.staged.json";

}  // namespace

TEST(StatePath, StandsBesideTheInstallDirectory) {
    const Sandbox sandbox;
    for (const QStringList& row : rows(R"(
        Games/Orbit/       | .staged.json    | Games/.quorvelle/Orbit.staged.json
        Games//x/../Orbit  | .staging        | Games/.quorvelle/Orbit.staging
        Games/a.b c        | .staging.build  | Games/.quorvelle/a.b c.staging.build
        new/deeper/Orbit   | .old            | new/deeper/.quorvelle/Orbit.old)")) {
        SCOPED_TRACE(row[0].toStdString());
        EXPECT_EQ(statePath(sandbox.path(row[0]), row[1].toUtf8().constData()),
                  sandbox.path(row[2]));
    }
    EXPECT_EQ(sandbox.tree("."), QStringList({"Games/.quorvelle/", "new/deeper/.quorvelle/"}));
    // Also for a relative directory.
    const QString relative = QDir::current().relativeFilePath(sandbox.path("app"));
    EXPECT_EQ(statePath(relative, ".old"), sandbox.path(".quorvelle/app.old"));
}

TEST(MigrateLegacyState, MovesWhatHasNoNewEntryWhereAMarkerStands) {
    for (const QStringList& row : rows(R"(
        app.installed.json=i app.old/f=o app.staged.json=s app.staging.build=b app.staging/d/f=x app/f=1 | .quorvelle/app.installed.json=i .quorvelle/app.old/f=o .quorvelle/app.staged.json=s .quorvelle/app.staging.build=b .quorvelle/app.staging/d/f=x app/f=1
        app.installed.json=i app.old/f=o | .quorvelle/app.installed.json=i .quorvelle/app.old/f=o
        app.staged.json=s app.staging/f=x | .quorvelle/app.staged.json=s .quorvelle/app.staging/f=x
        app.staging.build=b app.staging/f=x | .quorvelle/app.staging.build=b .quorvelle/app.staging/f=x
        .quorvelle/app.installed.json=new .quorvelle/app.staging/n=1 app.installed.json=old app.staged.json=s app.staging/f=1 | .quorvelle/app.installed.json=new .quorvelle/app.staged.json=s .quorvelle/app.staging/n=1 app.installed.json=old app.staging/f=1
        .quorvelle/app.staged.json/x=1 app.staged.json=s | .quorvelle/app.staged.json/x=1 app.staged.json=s
        app.lock=1 app.swap=1 app2.old/f=1 other.staged.json=1 | app.lock=1 app.swap=1 app2.old/f=1 other.staged.json=1
        app.old/mine=o app.staging/mine=o app/f=1 | app.old/mine=o app.staging/mine=o app/f=1
        app.installed.json/mine=1 app.old/mine=o | app.installed.json/mine=1 app.old/mine=o
        app.installed.json=i app.old=mine app.staged.json/mine=1 | .quorvelle/app.installed.json=i app.old=mine app.staged.json/mine=1
        .quorvelle=f app.installed.json=i app.old/f=o | .quorvelle=f app.installed.json=i app.old/f=o)")) {
        SCOPED_TRACE(row[0].toStdString());
        const Sandbox sandbox;
        for (const QString& entry : args(row[0])) {
            sandbox.write(entry.section(u'=', 0, 0), entry.section(u'=', 1).toUtf8());
        }
        migrateLegacyState(sandbox.path("app/"), {sandbox.path("app")});
        EXPECT_EQ(sandbox.tree("."), args(row[1]));
    }
}

TEST(MigrateLegacyState, NeverTakesWhatASubscriptionInstallsIn) {
    for (const QStringList& row : rows(R"(
        app.old          | app.old/f=o
        ./app.old/       | app.old/f=o
        app.old/d/../kit | app.old/f=o
        app.old2         | .quorvelle/app.old/f=o
        app.ol           | .quorvelle/app.old/f=o
        .                | .quorvelle/app.old/f=o)")) {
        SCOPED_TRACE(row[0].toStdString());
        const Sandbox sandbox;
        sandbox.write("app.installed.json", "i");
        sandbox.write("app.old/f", "o");
        migrateLegacyState(sandbox.path("app"), {sandbox.path("app"), sandbox.path(row[0])});
        EXPECT_THAT(sandbox.tree("."), ::testing::Contains(row[1]));
    }
}

TEST(MigrateLegacyState, KnowsASubscriptionsDirectoryBehindALink) {
    const Sandbox sandbox;
    sandbox.write("app.installed.json", "i");
    sandbox.write("app.old/f", "o");
    ASSERT_TRUE(QFile::link(sandbox.path("."), sandbox.path("link")));
    migrateLegacyState(sandbox.path("app"), {sandbox.path("link/app.old")});
    EXPECT_EQ(sandbox.read("app.old/f"), "o");
}

TEST(Markers, AreWrittenAsIndentedJson) {
    const Sandbox sandbox;
    const QString dir = sandbox.path("app");
    EXPECT_TRUE(writeInstalledMarker(dir, {"b\"1", "größe"}));
    EXPECT_EQ(sandbox.read(kInstalled),
              "{\n    \"build\": \"b\\\"1\",\n    \"channel\": \"größe\",\n"
              "    \"schema_version\": 1\n}\n");
    EXPECT_TRUE(writeStagedMarker(dir, {"b2", "c", 6000000000}));
    EXPECT_EQ(sandbox.read(kStaged),
              "{\n    \"build\": \"b2\",\n    \"channel\": \"c\",\n"
              "    \"schema_version\": 1,\n    \"total_size\": 6000000000\n}\n");

    EXPECT_TRUE(writeSwapRecord(dir, {"b2", "c", ".replaced-2", true, false}));
    EXPECT_EQ(sandbox.read(".quorvelle/app.swap"),
              "{\n    \"build\": \"b2\",\n    \"channel\": \"c\",\n    \"keep\": true,\n"
              "    \"moving\": false,\n    \"previous\": \".replaced-2\",\n"
              "    \"schema_version\": 1\n}\n");
    sandbox.write(".quorvelle/app.swap", R"({"previous": "/../../home"})");
    EXPECT_EQ(readSwapRecord(dir)->previous, QString(".old"));
    EXPECT_TRUE(writeStagingBuild(dir, "größe 2"));
    EXPECT_EQ(sandbox.read(".quorvelle/app.staging.build"), "größe 2");

    EXPECT_THAT(readInstalledMarker(dir), FieldsAre("b\"1", "größe"));
    EXPECT_THAT(readStagedMarker(dir), FieldsAre("b2", "c", 6000000000));
    removeStagedMarker(dir);
    EXPECT_EQ(sandbox.read(kStaged), "(missing)");
}

TEST(Markers, ReadAsEmptyWhenTheyHoldNoObject) {
    for (const char* bytes : {"{\"build\":\"b\"", "[{\"build\":\"b\"}]",
                              "{\"build\":1,\"channel\":[],\"total_size\":\"five\"}"}) {
        SCOPED_TRACE(bytes);
        const Sandbox sandbox;
        for (int round = 0; round < 2; ++round) {
            EXPECT_THAT(readInstalledMarker(sandbox.path("app")), FieldsAre("", ""));
            EXPECT_THAT(readStagedMarker(sandbox.path("app")), FieldsAre("", "", 0));
            sandbox.write(kInstalled, bytes);
            sandbox.write(kStaged, bytes);
        }
    }
}

}  // namespace quorvelle::testing
