#include <QFile>

#include "files/file_tree.h"
#include "support/process_runner.h"

namespace quorvelle::testing {

TEST(FlushTree, TakesFewAndManyEntriesAndFollowsNoLink) {
    for (const int files : {1, 100}) {
        SCOPED_TRACE(files);
        const Sandbox sandbox;
        for (int file = 0; file < files; ++file) {
            sandbox.write(QString("tree/d%1/f").arg(file), "bytes");
        }
        QFile::link(sandbox.path("missing"), sandbox.path("tree/link"));
        EXPECT_TRUE(flushTree(sandbox.path("tree")));
        EXPECT_FALSE(flushTree(sandbox.path("missing")));
    }
}

}  // namespace quorvelle::testing
