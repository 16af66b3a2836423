#include <QFile>

#include "support/qt_printers.h"
#include "support/sync_fixture.h"

namespace quorvelle::testing {
namespace {

using WindowsSync = SyncTest;

INSTANTIATE_TEST_SUITE_P(Modes, WindowsSync, ::testing::Bool(),
                         [](const auto& mode) { return mode.param ? "json" : "text"; });

TEST_P(WindowsSync, RefusesNamesThatWindowsReadsOtherwise) {
    for (const char* name : {"C:a", "C:/a", "a:stream", "nul", "d/COM1.txt", "a.", "d /a", "a?"}) {
        SCOPED_TRACE(name);
        publish(server, "stable", "b", {{"good", "g"}, {name, "x"}});
        expectSync("failed", fetching("b", {"good"}, 2),
                   QString("'app': manifest contains an unsafe path: ") + name);
        EXPECT_EQ(installed(), QStringList("(missing)"));
    }
}

TEST_P(WindowsSync, IsNotStoppedByReadOnlyFiles) {
    publish(server, "stable", "b1", {{"a", "one"}, {"d/b", "one"}});
    expectSync("synced", whole("b1", {"a", "d/b"}), synced("b1", 2, 6));
    ASSERT_TRUE(QFile::setPermissions(box.path("apps/app/d/b"), QFile::ReadOwner));
    publish(server, "stable", "b2", {{"a", "two"}});
    expectSync("synced", whole("b2", {"a"}), synced("b2", 1, 3));
    EXPECT_EQ(state(), QStringList("app.installed.json"));
}

TEST_P(WindowsSync, TakesShortcutsForFiles) {
    publish(server, "stable", "b1", {{"Play.lnk", "one"}, {"d/Play.lnk", "one"}});
    expectSync("synced", whole("b1", {"Play.lnk", "d/Play.lnk"}), synced("b1", 2, 6));
    EXPECT_EQ(installed(), (QStringList{"Play.lnk=one", "d/Play.lnk=one"}));
    publish(server, "stable", "b2", {{"Play.lnk", "two"}});
    expectSync("synced", whole("b2", {"Play.lnk"}), synced("b2", 1, 3));
    EXPECT_EQ(installed(), QStringList("Play.lnk=two"));
    EXPECT_EQ(state(), QStringList("app.installed.json"));
}

TEST_P(WindowsSync, InstallsPathsOfAnyLength) {
    const QString path = QString(200, u'a') + u'/' + QString(200, u'b') + "/file";
    publish(server, "stable", "b1", {{path, "one"}});
    expectSync("synced", whole("b1", {path}), synced("b1", 1, 3));
    EXPECT_EQ(installed(), QStringList(path + "=one"));
    expectSync("synced", whole("b1", {path}), synced("b1", 1, 3), args("sync --force"));
    EXPECT_EQ(state(), QStringList("app.installed.json"));
}

}  // namespace
}  // namespace quorvelle::testing
