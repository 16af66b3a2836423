#include <gtest/gtest.h>

#include <QFile>

#include "launch/launch_spec.h"
#include "support/notation.h"
#include "support/process_runner.h"

namespace quorvelle::testing {

TEST(LinkedPrograms, CountByWhatTheyLeadTo) {
    const Sandbox box;
    box.write("app/file", "");
    box.write("other/tool", "");
    ASSERT_TRUE(QFile::link(box.path("other/tool"), box.path("app/link")));
    ASSERT_TRUE(QFile::link(box.path("nowhere"), box.path("app/broken")));
    const QJsonObject subscription{{"dir", box.path("app")}};
    EXPECT_EQ(resolveTarget(subscription, {{"exe", "link"}}, {}).program, box.path("app/link"));
    EXPECT_EQ(resolveTarget(subscription, {{"exe", "broken"}}, {}).error,
              "not found: " + box.path("app/broken") + " (has this subscription synced yet?)");
}

}  // namespace quorvelle::testing
