#include "console/usage.h"

#include <gmock/gmock.h>

#include "support/qt_printers.h"

namespace quorvelle::testing {

TEST(Usage, StandsBetweenItsHeadingAndTheGlobalOption) {
    const Command table[] = {
        {.words = "one", .usage = "  quorvelle one <a>\n            [--x <y>]\n"},
        {.words = "enable", .usage = ""},
        {.words = "two", .usage = "  quorvelle two\n"},
    };
    EXPECT_EQ(usageText(table),
              QString("Quorvelle CLI 1.2.3+gtest\n"
                      "\n"
                      "Usage:\n"
                      "  quorvelle one <a>\n"
                      "            [--x <y>]\n"
                      "  quorvelle two\n"
                      "\n"
                      "Global:\n"
                      "  --json         machine-readable output (same exit codes)\n"));
}

}  // namespace quorvelle::testing
