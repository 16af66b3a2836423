#include <gtest/gtest.h>

#include <QFile>

#include "publish/build_directory.h"
#include "support/process_runner.h"
#include "support/qt_printers.h"

namespace quorvelle::testing {

TEST(LinkedBuildFiles, AreTakenUnlessBehindALinkToAFolder) {
    const Sandbox box;
    box.write("build/file", "");
    box.write("outside/x", "");
    for (const auto& [at, target] : {std::pair{"folder", "outside"},
                                     {"loop", "build"},
                                     {"broken", "nowhere"},
                                     {"linked", "outside/x"}}) {
        ASSERT_TRUE(QFile::link(box.path(target), box.path("build/") + at)) << at;
    }
    EXPECT_EQ(buildFiles(box.path("build")),
              (QStringList{box.path("build/file"), box.path("build/linked")}));
}

}  // namespace quorvelle::testing
