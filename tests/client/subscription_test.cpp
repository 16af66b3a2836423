#include "client/subscription.h"

#include <gmock/gmock.h>

#include <QDir>

#include "support/notation.h"
#include "support/qt_printers.h"

namespace quorvelle::testing {

namespace {

constexpr auto kInvalid = std::nullopt;

struct ParseRow {
    const char* text;
    std::optional<int> value;
};

}  // namespace

TEST(Interval, IsParsed) {
    for (const ParseRow& row : {
             ParseRow{"manual", 0},
             ParseRow{"off", 0},
             ParseRow{"0", 0},
             ParseRow{"MANUAL", 0},
             ParseRow{" Off\t", 0},
             ParseRow{"default", -1},
             ParseRow{"DeFault ", -1},
             ParseRow{"1", 1},
             ParseRow{" 60 ", 60},
             ParseRow{"2147483647", 2147483647},
             ParseRow{"007", 7},
             ParseRow{"2147483648", kInvalid},
             ParseRow{"4294967297", kInvalid},
             ParseRow{"-5", kInvalid},
             ParseRow{"-1", kInvalid},
             ParseRow{"+5", kInvalid},
             ParseRow{"1.5", kInvalid},
             ParseRow{"1,000", kInvalid},
             ParseRow{"0x10", kInvalid},
             ParseRow{"1e3", kInvalid},
             ParseRow{"60s", kInvalid},
             ParseRow{"6 0", kInvalid},
             ParseRow{"", kInvalid},
             ParseRow{" ", kInvalid},
             ParseRow{"none", kInvalid},
             ParseRow{"manually", kInvalid},
             ParseRow{"٦٠", kInvalid},
         }) {
        SCOPED_TRACE(row.text);
        EXPECT_EQ(parseInterval(row.text), row.value);
    }
}

TEST(SelfHeal, IsParsed) {
    for (const ParseRow& row : {
             ParseRow{"none", 0},
             ParseRow{"quick", 1},
             ParseRow{"full", 2},
             ParseRow{"default", -1},
             ParseRow{"Full", 2},
             ParseRow{" QUICK ", 1},
             ParseRow{"", kInvalid},
             ParseRow{"0", kInvalid},
             ParseRow{"1", kInvalid},
             ParseRow{"off", kInvalid},
             ParseRow{"fully", kInvalid},
         }) {
        SCOPED_TRACE(row.text);
        EXPECT_EQ(parseSelfHeal(row.text), row.value);
    }
}

TEST(SubscriptionLine, ShowsEverySetting) {
    struct Row {
        const char* name;
        const char* subscription;
        const char* line;
    };
    for (const Row& row : {
             Row{"plain",
                 "{'name':'n','channel':'c','server':'http://s','dir':'/"
                 "d','interval_seconds':60,'self_heal':2}",
                 "n: c @ http://s -> /d  (every 60s, self-heal full)\n"},
             Row{"absent settings", "{'name':'n','channel':'c','server':'s','dir':'/d'}",
                 "n: c @ s -> /d  (the global default, self-heal default)\n"},
             Row{"manual, none, managed",
                 "{'name':'n','channel':'c','server':'s','dir':'/"
                 "d','interval_seconds':0,'self_heal':0,'managed':true}",
                 "n: c @ s -> /d  (manual (no auto-sync), self-heal none)  [managed]\n"},
             Row{"defaults written, not managed",
                 "{'name':'n','channel':'c','server':'s','dir':'/"
                 "d','interval_seconds':-1,'self_heal':-1,'managed':false}",
                 "n: c @ s -> /d  (the global default, self-heal default)\n"},
             Row{"unknown self-heal number",
                 "{'name':'n','channel':'c','server':'s','dir':'/"
                 "d','interval_seconds':1,'self_heal':7}",
                 "n: c @ s -> /d  (every 1s, self-heal default)\n"},
             Row{"quick",
                 "{'name':'n','channel':'c','server':'s','dir':'/"
                 "d','interval_seconds':1,'self_heal':1}",
                 "n: c @ s -> /d  (every 1s, self-heal quick)\n"},
             Row{"placeholders in names",
                 "{'name':'100%1','channel':'%2 %4','server':'%6','dir':'/%3'}",
                 "100%1: %2 %4 @ %6 -> /%3  (the global default, self-heal default)\n"},
             Row{"empty", "{}", ":  @  ->   (the global default, self-heal default)\n"},
         }) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(subscriptionLine(json(row.subscription)), QString(row.line));
    }
}

TEST(AbsolutePath, LeavesNothingRelative) {
    EXPECT_EQ(absolutePath("/a/b"), QString("/a/b"));
    EXPECT_EQ(absolutePath("a/b"), QDir::currentPath() + "/a/b");
    EXPECT_EQ(absolutePath("./a/../b"), QDir::currentPath() + "/b");
}

}  // namespace quorvelle::testing
