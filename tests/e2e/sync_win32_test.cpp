#include <windows.h>

#include <QDir>
#include <QFile>

#include "support/fake_tide.h"
#include "support/platform.h"
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

TEST_P(WindowsSync, RefusesPathsThatDifferInCaseAlone) {
    publish(server, "stable", "b", {{"Readme.txt", "R"}, {"bin/a", "a"}, {"readme.txt", "r"}});
    expectSync("failed", fetching("b", {}), "'app': manifest lists the path twice: readme.txt");
    EXPECT_EQ(installed(), QStringList("(missing)"));
}

TEST_P(WindowsSync, DownloadsNothingForAFileThatNobodyCanRead) {
    publishTide(server, "stable", "b", {{"a", {"one"}}});
    QJsonObject checked = subscription("app", "stable");
    checked["self_heal"] = 2;
    subscribe({checked});
    EXPECT_EQ(run({"sync"}).code, 0);
    const Held held(box.path("apps/app/a"), Held::From::kReads);
    const Outcome got = run({"sync"});
    const QString message = "'app' is up to date (check skipped: 1 file(s) in use)";
    EXPECT_TRUE((GetParam() ? got.json()["results"][0]["message"].toString()
                            : got.out.section('\n', -2, -2)) == message)
        << got.out.toStdString() << got.err.toStdString();
    EXPECT_EQ(got.code, 0);
}

TEST_P(WindowsSync, ReplacesBuildsInWhichSomebodyMadeOddNames) {
    publish(server, "stable", "b1", {{"a", "one"}});
    expectSync("synced", whole("b1", {"a"}), synced("b1", 1, 3));
    for (const char* name : {"nul", "foo.", "trail "}) {
        // As no path without this beginning can be written.
        const std::wstring path =
            L"\\\\?\\" +
            (QDir::toNativeSeparators(box.path("apps/app")) + u'\\' + name).toStdWString();
        const HANDLE made = CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                                        FILE_ATTRIBUTE_NORMAL, nullptr);
        ASSERT_NE(made, INVALID_HANDLE_VALUE);
        CloseHandle(made);
    }
    publish(server, "stable", "b2", {{"a", "two"}});
    expectSync("synced", whole("b2", {"a"}), synced("b2", 1, 3));
    EXPECT_EQ(state(), QStringList("app.installed.json"));
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

TEST(SubscribeOnWindows, RefusesDirectoriesThatWouldBeOthers) {
    const Sandbox box;
    for (const char* dir : {R"(C:\)", "nul", "app.", "app "}) {
        const Outcome got = box.run({"subscribe", "http://h", "stable", "--dir", dir});
        EXPECT_EQ(got.code, 1) << dir;
        EXPECT_TRUE(got.err.startsWith("cannot install into ")) << got.err.toStdString();
    }
    EXPECT_EQ(box.read("config/config.json"), "(missing)");
}

}  // namespace
}  // namespace quorvelle::testing
