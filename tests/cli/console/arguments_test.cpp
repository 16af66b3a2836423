#include "cli/console/arguments.h"

#include <gmock/gmock.h>

#include "support/notation.h"
#include "support/qt_printers.h"

namespace quorvelle::testing {

TEST(TakeOption, TakesTheFirstOccurrenceWithItsValue) {
    struct Row {
        const char* name;
        const char* before;
        const char* value;
        const char* after;
    };
    for (const Row& row : {
             Row{"absent", "a b", "fallback", "a b"},
             Row{"empty list", "", "fallback", ""},
             Row{"in front", "--dir x a b", "x", "a b"},
             Row{"in the middle", "a --dir x b", "x", "a b"},
             Row{"at the end", "a b --dir x", "x", "a b"},
             Row{"last element stays a positional", "a --dir", "fallback", "a --dir"},
             Row{"alone", "--dir", "fallback", "--dir"},
             Row{"repeated: only the first", "--dir x a --dir y", "x", "a --dir y"},
             Row{"the value may look like an option", "--dir --name x", "--name", "x"},
             Row{"its own name as the value", "--dir --dir x", "--dir", "x"},
             Row{"other case is another word", "--Dir x", "fallback", "--Dir x"},
             Row{"with = is another word", "--dir=x", "fallback", "--dir=x"},
         }) {
        SCOPED_TRACE(row.name);
        QStringList list = args(row.before);
        EXPECT_EQ(takeOption(list, "--dir", "fallback"), QString(row.value));
        EXPECT_EQ(list, args(row.after));
    }
}

TEST(TakeOption, ReturnsAnEmptyValueAsItStands) {
    QStringList list{"--dir", "", "a"};
    EXPECT_EQ(takeOption(list, "--dir", "fallback"), QString(""));
    EXPECT_EQ(list, args("a"));
}

TEST(TakeFlag, RemovesEveryOccurrence) {
    struct Row {
        const char* before;
        bool found;
        const char* after;
    };
    for (const Row& row : {Row{"a b", false, "a b"}, Row{"", false, ""}, Row{"--yes", true, ""},
                           Row{"--yes a --yes --yes b --yes", true, "a b"},
                           Row{"--yes=1 --Yes", false, "--yes=1 --Yes"}}) {
        SCOPED_TRACE(row.before);
        QStringList list = args(row.before);
        EXPECT_EQ(takeFlag(list, "--yes"), row.found);
        EXPECT_EQ(list, args(row.after));
    }
}

}  // namespace quorvelle::testing
