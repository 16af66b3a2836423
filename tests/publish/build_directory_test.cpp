#include "publish/build_directory.h"

#include <gmock/gmock.h>

#include "support/process_runner.h"
#include "support/qt_printers.h"

namespace quorvelle::testing {

TEST(BuildFiles, AreTheVisibleFilesInOrder) {
    const Sandbox sandbox;
    for (const char* name : {"b/z", "b.txt", "C", "Play.lnk", "a b", "größe", "b/c/d", ".hidden",
                             ".git/x", "b/.cache/deep/x", "b/..c/x"}) {
        sandbox.write(QString("build/") + name, name);
    }
    QStringList expected;
    for (const char* name : {"C", "Play.lnk", "a b", "b.txt", "b/c/d", "b/z", "größe"}) {
        expected.append(sandbox.path(QString("build/") + name));
    }
    EXPECT_EQ(buildFiles(sandbox.path("build")), expected);
    EXPECT_EQ(buildFiles(sandbox.path("build/")), expected);
    EXPECT_EQ(buildFiles(sandbox.path("missing")), QStringList());
}

}  // namespace quorvelle::testing
