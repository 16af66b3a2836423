#include "console/shown_text.h"

#include <gmock/gmock.h>

#include "support/notation.h"

namespace quorvelle::testing {

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

}  // namespace quorvelle::testing
