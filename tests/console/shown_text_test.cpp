#include "console/shown_text.h"

#include "console/progress_line.h"
#include "support/notation.h"

namespace quorvelle::testing {

namespace {

using std::chrono::milliseconds;

constexpr qint64 kMega = 1048576;

}  // namespace

TEST(ShownText, HidesThePasswordsOfAddresses) {
    for (const auto& [text, shown] :
         {std::pair("at http://ann:secret@h:8080/p?a@b failed",
                    "at http://ann:***@h:8080/p?a@b failed"),
          {"(https://:s@a, http://b:p@s:w@c)", "(https://:***@a, http://b:***@c)"},
          {"http://ann@h/x", "http://ann@h/x"},
          {"http://h:80/a@b, ann:pw@h", "http://h:80/a@b, ann:pw@h"},
          {"tcp://u:p@h\nhttp://[::1]:80 to a@b", "tcp://u:***@h\nhttp://[::1]:80 to a@b"}}) {
        EXPECT_EQ(withoutPasswords(text), QString(shown));
    }
}

TEST(ShownText, ShowsWhatATerminalWouldObey) {
    EXPECT_EQ(withVisibleControls(QStringLiteral("a\x1B[2K\r\tb\nc\x7F\u0080\u009B\u00A0ä\\x")),
              QStringLiteral("a\\x1B[2K\\x0D\\x09b\\x0Ac\\x7F\\x80\\x9B\u00A0ä\\x"));
    EXPECT_EQ(withVisibleControls(QStringLiteral("x\u202Egpj.exe\u2066\u200F")),
              QStringLiteral("x\\u202Egpj.exe\\u2066\u200F"));
    EXPECT_EQ(withVisibleControlsInLines("a\r\n\tb\n"), QString("a\\x0D\n\\x09b\n"));
}

TEST(ShownText, TakesLineEndsOfThePatternAlone) {
    EXPECT_EQ(lines("%2: 100%\n%1%9\n", {"a\n%2", "b"}), (Lines{"b: 100%", "a\n%2", ""}));
}

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
