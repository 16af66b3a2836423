#include <windows.h>

#include <QDateTime>

#include "support/sync_fixture.h"

namespace quorvelle::testing {
namespace {

using WindowsSync = SyncTest;

TEST_F(WindowsSync, RefusesPathsThatDifferInCaseAlone) {
    publish(server, "stable", "b", {{"Readme.txt", "R"}, {"bin/a", "a"}, {"readme.txt", "r"}});
    expectSync("failed", fetching("b", {}), "'app': manifest lists the path twice: readme.txt");
    EXPECT_EQ(installed(), QStringList("(missing)"));
}

TEST_F(WindowsSync, DownloadsNothingForAFileThatNobodyCanRead) {
    publishTide(server, "stable", "b", {{"a", {"one"}}});
    QJsonObject checked = subscription("app", "stable");
    checked["self_heal"] = 2;
    subscribe({checked});
    EXPECT_EQ(box.run({"sync"}).code, 0);
    const Held held(box.path("apps/app/a"), Held::From::kReads);
    expectSync("current", {kChecking, kCheckingTide, "'app': verifying install ..."},
               "'app' is up to date (check skipped: 1 file(s) in use)");
}

TEST_F(WindowsSync, GivesLargeFilesASecondNameWhileNobodyWritesThem) {
    const QString path = box.path("apps/app/large");
    const auto open = [&path](DWORD access) {
        return CreateFileW(path.toStdWString().c_str(), access,
                           FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                           OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    };
    const auto number = [&open] {
        BY_HANDLE_FILE_INFORMATION about = {};
        const HANDLE file = open(0);
        EXPECT_NE(GetFileInformationByHandle(file, &about), 0);
        CloseHandle(file);
        return about.nFileIndexLow;
    };
    const auto update = [&](const char* build) {
        publishTide(server, "stable", build,
                    {{"a", {build}}, {"large", {std::string(65536, 'x')}}});
        EXPECT_EQ(box.run({"sync"}).code, 0);
    };
    update("b1");
    const DWORD before = number();
    QFile large(path);
    ASSERT_TRUE(large.open(QIODevice::ReadWrite) &&
                large.setFileTime(QDateTime::currentDateTime().addSecs(-3600),
                                  QFileDevice::FileModificationTime));
    large.close();
    update("b2");
    EXPECT_EQ(number(), before);
    const HANDLE writer = open(GENERIC_WRITE);
    update("b3");
    EXPECT_NE(number(), before);
    CloseHandle(writer);
}

TEST_F(WindowsSync, TakesShortcutsForFiles) {
    publish(server, "stable", "b1", {{"Play.lnk", "one"}, {"d/Play.lnk", "one"}});
    expectSync("synced", whole("b1", {"Play.lnk", "d/Play.lnk"}), synced("b1", 2, 6));
    EXPECT_EQ(installed(), (QStringList{"Play.lnk=one", "d/Play.lnk=one"}));
    publish(server, "stable", "b2", {{"Play.lnk", "two"}});
    expectSync("synced", whole("b2", {"Play.lnk"}), synced("b2", 1, 3));
    EXPECT_EQ(installed(), QStringList("Play.lnk=two"));
    EXPECT_EQ(state(), QStringList("app.installed.json"));
}

TEST_F(WindowsSync, InstallsPathsOfAnyLength) {
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
