#include "config/subscription.h"

#include <gmock/gmock.h>

#include "support/notation.h"

namespace quorvelle::testing {

TEST(Interval, IsParsed) {
    for (const QStringList& row : rows(R"(
        manual | 0
        0 | 0
        MANUAL | 0
        default | -1
        1 | 1
        007 | 7
        2147483647 | 2147483647)")) {
        SCOPED_TRACE(row[0].toStdString());
        EXPECT_EQ(parseInterval(row[0]), row[1].toInt());
        EXPECT_EQ(parseInterval(" \t" + row[0] + " "), row[1].toInt());
    }
    for (const char* invalid :
         {"2147483648", "4294967297", "-1", "+5", "1.5", "0x10", "60s", "", "manually", "٦٠"}) {
        EXPECT_EQ(parseInterval(invalid), std::nullopt) << invalid;
    }
}

TEST(SelfHeal, IsParsed) {
    EXPECT_EQ(parseSelfHeal("none"), 0);
    EXPECT_EQ(parseSelfHeal("quick"), 1);
    EXPECT_EQ(parseSelfHeal("full"), 2);
    EXPECT_EQ(parseSelfHeal("default"), -1);
    EXPECT_EQ(parseSelfHeal(" Full\n"), 2);
    for (const char* invalid : {"", "0", "1", "off", "fully", "full quick"}) {
        EXPECT_EQ(parseSelfHeal(invalid), std::nullopt) << invalid;
    }
}

}  // namespace quorvelle::testing
