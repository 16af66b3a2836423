#include "config/subscription.h"

#include <gmock/gmock.h>

#include <QDir>

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

TEST(SubscriptionLine, ShowsEverySetting) {
    for (const QStringList& row : rows(R"(
        'interval_seconds':60,'self_heal':2                 | (every 60s, self-heal full)
        'own':1                                             | (the global default, self-heal default)
        'interval_seconds':-1,'self_heal':-1                | (the global default, self-heal default)
        'interval_seconds':0,'self_heal':0                  | (manual (no auto-sync), self-heal none)
        'interval_seconds':1,'self_heal':1,'managed':false  | (every 1s, self-heal quick)
        'managed':true                | (the global default, self-heal default)  [managed])")) {
        SCOPED_TRACE(row[0].toStdString());
        const QString entry = "{'name':'n','channel':'c','server':'http://s','dir':'/d'," + row[0];
        EXPECT_EQ(subscriptionLine(json((entry + '}').toUtf8())),
                  "n: c @ http://s -> " + QDir::toNativeSeparators("/d  ") + row[1] + '\n');
    }
    EXPECT_EQ(
        subscriptionLine(json("{'name':'100%1','channel':'%2 %4','server':'%6','dir':'/%3'}")),
        "100%1: %2 %4 @ %6 -> " + QDir::toNativeSeparators("/%3  ") +
            "(the global default, self-heal default)\n");
    EXPECT_EQ(subscriptionLine({}),
              QString(":  @  ->   (the global default, self-heal default)\n"));
}

TEST(AbsolutePath, LeavesNothingRelative) {
    EXPECT_EQ(absolutePath("/a/b"), drive() + "/a/b");
    EXPECT_EQ(absolutePath("a/b"), QDir::currentPath() + "/a/b");
    EXPECT_EQ(absolutePath("./a/../b"), QDir::currentPath() + "/b");
}

}  // namespace quorvelle::testing
