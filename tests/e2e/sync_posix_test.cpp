#include <sys/stat.h>
#include <unistd.h>

#include <functional>

#include "support/faulty_run.h"
#include "support/sync_fixture.h"
#include "support/terminal_run.h"

namespace quorvelle::testing {
namespace {

/// Runs a command that sees one folder mounted over another; the code is kNoMount where
/// this user may not mount.
constexpr int kNoMount = 99;
constexpr char kNeedsMounts[] = "not run: only root can mount";

Outcome runMounted(const Sandbox& box, const QString& folder, const QString& over,
                   const QStringList& words) {
    const QStringList script{"-m",
                             "sh",
                             "-c",
                             "mount --bind \"$0\" \"$1\" || exit 99; shift; exec \"$@\"",
                             box.path(folder),
                             box.path(over)};
    const Outcome outcome = box.runProgram("unshare", script + words);
    // Where not even a name space is given, nothing was said about the mount.
    return outcome.err.startsWith("unshare:") ? Outcome{kNoMount, {}, {}} : outcome;
}

using Staging = SyncTest;

/// Root alone can see this fail.
TEST_F(Staging, WritesNothingAtTheRootOfTheFileSystemWithoutAHomeFolder) {
    publishTide(server, "stable", "b1", {{"a", {"one"}}});
    for (const char* name : {"HOME", "XDG_CACHE_HOME"}) {
        box.environment.remove(name);
    }
    box.environment.insert("FAULT_NO_USERS", "1");
    EXPECT_EQ(runFaulty(box, {"sync"}, {}).code, 0);
    EXPECT_FALSE(QFileInfo::exists("/.cache/quorvelle"));
}

TEST_F(Staging, ThatIsTamperedWithDuringTheDownloadIsNotInstalled) {
    const QString state = box.path("apps/.quorvelle");
    const QString staging = state + "/app.staging";
    const QStringList paths{"a", "a", "c/d"};
    const QString lost = "'app': cannot create directory for c/d";
    struct Row {
        const char* name;
        std::function<bool()> tamper;
        QString message;
    };
    for (const Row& row :
         {Row{"state folder removed", [&] { return QDir(state).removeRecursively(); }, lost},
          Row{"staging swapped for a link",
              [&] {
                  return QDir(staging).removeRecursively() &&
                         QFile::link(box.path("victim"), staging);
              },
              lost},
          Row{"folder swapped for a link",
              [&] { return QFile::link(box.path("victim"), staging + "/c"); }, lost},
          Row{"a file removed", [&] { return QFile::remove(staging + "/a"); },
              "'app': staging is not complete - the next sync starts over"},
          Row{"a file added", [&] { return QFile::copy(staging + "/a", staging + "/more"); },
              "'app': staging is not complete - the next sync starts over"}}) {
        SCOPED_TRACE(row.name);
        ASSERT_TRUE(QDir().mkpath(box.path("victim")));
        publish(server, "stable", "b", {{"a", "1"}, {"a", "1"}, {"c/d", "2"}});
        server.on("GET", fileTarget("b", "c/d"),
                  [&](const httplib::Request&, httplib::Response& response) {
                      EXPECT_TRUE(row.tamper());
                      response.set_content("2", "text/plain");
                  });
        expectSync("failed", fetching("b", paths), row.message);
        EXPECT_EQ(installed(), QStringList("(missing)"));
        EXPECT_EQ(box.tree("victim"), QStringList());
    }
    publish(server, "stable", "b", {{"a", "1"}, {"a", "1"}, {"c/d", "2"}});
    expectSync("synced", whole("b", paths), synced("b", 3, 3));
}

using InstallDirectory = SyncTest;

TEST_F(InstallDirectory, ThatIsALinkIsUpdatedBehindIt) {
    box.write("big disk/games/app/a", "0");
    box.write("big disk/games/.quorvelle/app.installed.json", R"({"build":"b0"})");
    ASSERT_TRUE(QDir().mkpath(box.path("apps")));
    ASSERT_TRUE(QFile::link(box.path("big disk/games/app"), box.path("other")));
    ASSERT_TRUE(QFile::link(box.path("other"), box.path("apps/app")));
    // A name that Windows would refuse.
    publish(server, "stable", "b1", {{"a:b", "1"}});
    expectSync("synced", whole("b1", {"a:b"}), synced("b1", 1, 1));
    expectSync("current", {kChecking}, upToDate("b1"));
    EXPECT_EQ(QFile::symLinkTarget(box.path("apps/app")), box.path("other"));
    EXPECT_EQ(QFile::symLinkTarget(box.path("other")), box.path("big disk/games/app"));
    EXPECT_EQ(box.tree("big disk/games/app"), QStringList("a:b=1"));
    EXPECT_EQ(QDir(box.path("big disk/games/.quorvelle")).entryList(QDir::Files),
              QStringList("app.installed.json"));
    EXPECT_EQ(state(), QStringList());
}

TEST_F(InstallDirectory, ThatIsADanglingLinkIsNotTouched) {
    publish(server, "stable", "b1", {{"a", "1"}});
    ASSERT_TRUE(QDir().mkpath(box.path("apps")));
    ASSERT_TRUE(QFile::link(box.path("missing"), box.path("apps/app")));
    expectSync("blocked", whole("b1", {"a"}), notActivated("b1"));
    const QString note = "'app': " + box.path("apps/app") + " is not a directory\n";
    EXPECT_EQ(runAtTerminal(box, {"sync"}).err, note);
    EXPECT_TRUE(QFileInfo(box.path("apps/app")).isSymbolicLink());
    EXPECT_FALSE(QFile::exists(box.path("missing")));
}

TEST_F(InstallDirectory, ThatIsAMountPointIsRefusedBeforeTheDownload) {
    box.write("apps/app/a", "0");
    const auto mounted = [this](const QStringList& words) {
        return runMounted(box, "apps/app", "apps/app", words);
    };
    if (mounted({"true"}).code == kNoMount) {
        GTEST_SKIP() << kNeedsMounts;
    }
    const QString refused = "'app': " + box.path("apps/app") +
                            " cannot be replaced as a whole (it is a mount point) - install into "
                            "a folder below it";
    const QStringList sync{quorvelleProgram(), "sync"};
    publish(server, "stable", "b1", {{"a", "1"}});
    expectResult(mounted(sync), "failed", {kChecking}, refused);
    EXPECT_EQ(server.lines().size(), 1U);
    publishTide(server, "stable", "b1", {{"a", {"1"}}});
    expectResult(mounted(sync), "failed", {kChecking, "'app': checking Tide channel 'stable' ..."},
                 refused);
    EXPECT_EQ(server.lines().size(), 3U);
    EXPECT_EQ(installed(), QStringList("a=0"));
    EXPECT_EQ(state(), QStringList());
}

using LockEntry = SyncTest;

TEST_F(LockEntry, ThatCannotBeLockedEndsTheSync) {
    writeState(".lock/in the way", "");
    expectSync("failed", {},
               "'app': cannot lock " + box.path("apps/.quorvelle/app.lock") + ": Is a directory");
    EXPECT_EQ(server.lines().size(), 0U);
}

class OldBuild : public SyncTest {
protected:
    void update(int number) {
        const QString build = QString("b%1").arg(number);
        publish(server, "stable", build, {{"a", QByteArray::number(number)}});
        expectResult(runObeyingPermissions(box, {"sync"}), "synced", whole(build, {"a"}),
                     synced(build, 1, 1));
        EXPECT_EQ(box.read("apps/app/a"), QByteArray::number(number));
    }
    void forbidWriting(const char* folder) const {
        ASSERT_EQ(::chmod(box.path(folder).toUtf8().constData(), 0555), 0);
    }
};

TEST_F(OldBuild, GoesWithDirectoriesThatAreNotWritable) {
    update(1);
    box.write("apps/app/cache/deep/x", "x");
    box.write("outside/x", "x");
    ASSERT_TRUE(QFile::link(box.path("outside"), box.path("apps/app/cache/link")));
    forbidWriting("apps/app/cache/deep");
    forbidWriting("apps/app/cache");
    forbidWriting("outside");
    for (const int number : {2, 3}) {
        update(number);
        EXPECT_EQ(state(), QStringList("app.installed.json"));
    }
    EXPECT_FALSE(QFile::permissions(box.path("outside")).testFlag(QFile::WriteOwner));
    QFile::setPermissions(box.path("outside"),
                          QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
}

TEST_F(OldBuild, KeepsWhatIsMountedInIt) {
    update(1);
    box.write("my saves/game", "played");
    ASSERT_TRUE(QDir().mkpath(box.path("apps/app/my saves")));
    publish(server, "stable", "b2", {{"a", "2"}});
    const Outcome got =
        runMounted(box, "my saves", "apps/app/my saves", {quorvelleProgram(), "sync"});
    if (got.code == kNoMount) {
        GTEST_SKIP() << kNeedsMounts;
    }
    expectResult(got, "synced", whole("b2", {"a"}), synced("b2", 1, 1));
    EXPECT_EQ(box.read("my saves/game"), "played");
    EXPECT_EQ(state(), (QStringList{"app.installed.json", "app.old-1"}));
    expectSync("current", {kChecking}, upToDate("b2"));
    EXPECT_EQ(state(), QStringList("app.installed.json"));
}

TEST_F(OldBuild, OfAnotherUserStandsInNobodysWay) {
    if (::geteuid() != 0) {
        GTEST_SKIP() << "not run: only root can make files of another user";
    }
    update(1);
    for (const int number : {2, 3}) {
        const QString folder = box.path("apps/app/theirs");
        box.write("apps/app/theirs/x", "x");
        ASSERT_EQ(::chown(folder.toUtf8().constData(), 65534, 65534), 0);
        update(number);
    }
    EXPECT_EQ(state(), (QStringList{"app.installed.json", "app.old-1", "app.old-2"}));
    // Whoever can remove them does, and nothing but them.
    writeState(".old-3x/keep", "");
    box.write("apps/.quorvelle/app2.old-1/keep", "");
    expectSync("current", {kChecking}, upToDate("b3"));
    EXPECT_EQ(state(), (QStringList{"app.installed.json", "app.old-3x", "app2.old-1"}));
}

}  // namespace
}  // namespace quorvelle::testing
