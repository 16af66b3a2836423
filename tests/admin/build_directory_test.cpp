#include "admin/build_directory.h"

#include <gmock/gmock.h>

#include <QFile>

#include "support/process_runner.h"
#include "support/qt_printers.h"

namespace quorvelle::testing {

TEST(BuildFiles, AreTheVisibleFilesInOrder) {
    const Sandbox sandbox;
    for (const char* name : {"b/z", "b.txt", "B", "a b", "größe", "b/c/d", ".hidden", ".git/x",
                             "b/.cache/deep/x", "b/..c/x"}) {
        sandbox.write(QString("build/") + name, name);
    }
    sandbox.write("outside/x", "");
    QFile::link(sandbox.path("outside"), sandbox.path("build/linked"));
    QFile::link(sandbox.path("build"), sandbox.path("build/b/loop"));
    QStringList expected;
    for (const char* name : {"B", "a b", "b.txt", "b/c/d", "b/z", "größe"}) {
        expected.append(sandbox.path(QString("build/") + name));
    }
    EXPECT_EQ(buildFiles(sandbox.path("build")), expected);
    EXPECT_EQ(buildFiles(sandbox.path("build/")), expected);
    EXPECT_EQ(buildFiles(sandbox.path("missing")), QStringList());
}

}  // namespace quorvelle::testing
