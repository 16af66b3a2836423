#include "console/progress_line.h"

#include <gtest/gtest.h>

#include "support/qt_printers.h"

namespace quorvelle::testing {

namespace {

using std::chrono::milliseconds;

constexpr qint64 kMega = 1048576;

}  // namespace

TEST(Rate, IsThatOfTheLastSeconds) {
    Rate rate;
    rate.note(milliseconds(1000), 5000);
    EXPECT_EQ(rate.perSecond(), std::nullopt);
    rate.note(milliseconds(1999), 6000);
    EXPECT_EQ(rate.perSecond(), std::nullopt);
    rate.note(milliseconds(2000), 6000);
    EXPECT_EQ(rate.perSecond(), 1000);
    for (int second = 3; second <= 20; ++second) {
        rate.note(milliseconds(second * 1000), 6000);
    }
    EXPECT_EQ(rate.perSecond(), 0);
    // An upload that begins anew says nothing yet of how fast it is.
    rate.note(milliseconds(21000), 10);
    EXPECT_EQ(rate.perSecond(), std::nullopt);
}

TEST(ProgressLine, SaysWhatFitsIntoTheRoom) {
    const Progress half{.name = "canary", .bytes = 334 * kMega, .total = 668 * kMega};
    const std::optional<double> fast = 38.1 * kMega;
    for (const auto& [progress, rate, columns, line] :
         {std::tuple(half, fast, 79,
                     "canary  [#########----------]  334.0 of 668.0 MiB    38.1 MiB/s  0:09 left"),
          {half, fast, 60, "canary  334.0 of 668.0 MiB    38.1 MiB/s  0:09 left"},
          {half, fast, 45, "canary  334.0 of 668.0 MiB    38.1 MiB/s"},
          {half, fast, 26, "canary  334.0 of 668.0 MiB"},
          {half, fast, 22, "334.0 of 668.0 MiB"},
          {half, fast, 10, "334.0 o..."},
          {half, std::nullopt, 79, "canary  [#########----------]  334.0 of 668.0 MiB"},
          {half, 0.0, 60, "canary  334.0 of 668.0 MiB     0 bytes/s"},
          {{"a", 5000, {}}, std::nullopt, 79, "a  4.9 KiB"},
          {{"a", 0, 0}, std::nullopt, 79, "a  0 of 0 bytes"},
          // A file that grew while it was sent.
          {{"a", 30, 20}, std::nullopt, 79, "a  [########################]  30 of 20 bytes"},
          {{"a", 0, 36000}, 4.0, 60, "a   0.0 of 35.2 KiB     4 bytes/s  2:30:00 left"},
          {{"a\x1B[2J", 1, 2}, std::nullopt, 40, "a\\x1B[2J  1 of 2 bytes"},
          {{QString(30, u'語'), 1, 2}, std::nullopt, 40, "語語語語語語語語...  1 of 2 bytes"}}) {
        EXPECT_EQ(progressText(progress, rate, columns), QString(line));
    }
}

}  // namespace quorvelle::testing
