#include <sys/stat.h>
#include <unistd.h>

#include <QFile>

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

class OldBuild : public SyncTest {
protected:
    void update(int number) {
        const QString build = QString("b%1").arg(number);
        publish(server, "stable", build, {{"a", QByteArray::number(number)}});
        expectResult(run({"sync"}, true), "synced", whole(build, {"a"}), synced(build, 1, 1));
        EXPECT_EQ(box.read("apps/app/a"), QByteArray::number(number));
    }
    void forbidWriting(const char* folder) const {
        ASSERT_EQ(::chmod(box.path(folder).toUtf8().constData(), 0555), 0);
    }
};

INSTANTIATE_TEST_SUITE_P(Modes, OldBuild, ::testing::Bool(),
                         [](const auto& mode) { return mode.param ? "json" : "text"; });

TEST_P(OldBuild, GoesWithDirectoriesThatAreNotWritable) {
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

TEST_P(OldBuild, OfAnotherUserStandsInNobodysWay) {
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
