#include <QFile>
#include <cstdio>
#include <fstream>

#include "publish/build_directory.h"
#include "support/process_runner.h"

namespace quorvelle::testing {

/// Each row: a link in the directory, what it leads to, and what comes of it: "taken",
/// "out", or a refusal in which "$" stands for the link.
TEST(LinkedBuildFiles, AreTakenWhenTheyStayInside) {
    for (const QStringList& row : rows(R"(
        plain   | BOX/build/file      | taken
        sub/up  | ../file             | taken
        visible | .hidden             | taken
        round   | BOX/outside/back    | taken
        folder  | BOX/outside         | out
        loop    | BOX/build           | out
        pipe    | BOX/build/.fifo     | out
        out     | BOX/outside/x       | $ leads out of the directory
        beside  | BOX/build-2/x       | $ leads out of the directory
        via     | .folder/x           | $ leads out of the directory
        device  | /dev/null           | $ leads out of the directory
        broken  | BOX/build/nowhere   | cannot open $
        itself  | itself              | cannot open $)")) {
        SCOPED_TRACE(row[0].toStdString());
        const Sandbox box;
        for (const char* file :
             {"build/file", "build/.hidden", "build/sub/z", "build-2/x", "outside/x"}) {
            box.write(file, "");
        }
        box.runProgram("mkfifo", {"build/.fifo"});
        ASSERT_TRUE(QFile::link(box.path("build/file"), box.path("outside/back")));
        ASSERT_TRUE(QFile::link(box.path("outside"), box.path("build/.folder")));
        const QString link = box.path("build/") + row[0];
        ASSERT_TRUE(QFile::link(QString(row[1]).replace("BOX", box.path({})), link));
        const BuildFiles got = buildFiles(box.path("build"));
        const bool isRefused = row[2].contains('$');
        EXPECT_EQ(got.refusal, isRefused ? QString(row[2]).replace('$', link) : QString());
        EXPECT_EQ(got.files.contains(link), row[2] == "taken");
        EXPECT_TRUE(isRefused || got.files.contains(box.path("build/sub/z")));
        // The directory may be reached through a link itself.
        ASSERT_TRUE(QFile::link(box.path("build"), box.path("entry")));
        EXPECT_EQ(buildFiles(box.path("entry")).files.contains(box.path("entry/") + row[0]),
                  row[2] == "taken");
        // Qt cannot remove a folder that holds a link to itself.
        EXPECT_TRUE(QFile::remove(link));
    }
}

TEST(BuildFiles, AreRefusedWhenOneCannotBeNamed) {
    const Sandbox box;
    box.write("build/sub/z", "");
    const std::string folder = box.path("build/sub/").toStdString();
    for (const std::string name : {".\xff", "a\xff.txt", "\xed\xa0\x80"}) {
        std::ofstream(folder + name);
        const QString refusal = buildFiles(box.path("build")).refusal;
        EXPECT_EQ(refusal.startsWith("cannot open " + box.path("build/sub/")), name[0] != '.');
        // Qt cannot remove such a file.
        EXPECT_EQ(std::remove((folder + name).c_str()), 0);
    }
}

/// By a push that obeys permissions: without an answer to what a folder holds, and to what
/// kind of thing a name in it is.
TEST(BuildFiles, AreRefusedWhenAFolderCannotBeListed) {
    const auto usual = QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner;
    for (const auto& [folder, allowed, named] :
         {std::tuple{"build", QFile::Permissions(), "build"},
          {"build/sub", QFile::Permissions(), "build/sub"},
          {"build/sub", QFile::Permissions(QFile::ReadOwner), "build/sub/deep"}}) {
        const Sandbox box;
        box.write("build/a", "");
        box.write("build/sub/deep/z", "");
        QFile::setPermissions(box.path(folder), allowed);
        expectOutcome(
            runObeyingPermissions(box, args("push build --channel c --server http://127.0.0.1:1")),
            2, {}, "cannot open " + box.path(named) + '\n');
        QFile::setPermissions(box.path(folder), usual);
    }
}

}  // namespace quorvelle::testing
