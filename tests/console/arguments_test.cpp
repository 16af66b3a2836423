#include "console/arguments.h"

#include "support/notation.h"

namespace quorvelle::testing {

/// "~" is an empty word.
TEST(TakeOption, TakesTheFirstOccurrenceWithItsValue) {
    for (const QStringList& row : rows(R"(
        absent                                 | a b              | fallback | a b
        in the middle                          | a --dir x b      | x        | a b
        at the end                             | a b --dir x      | x        | a b
        the last element stays a positional    | a --dir          | fallback | a --dir
        repeated: only the first               | --dir x a --dir y| x        | a --dir y
        the value may look like an option      | --dir --name x   | --name   | x
        its own name as the value              | --dir --dir x    | --dir    | x
        another case is another word           | --Dir x          | fallback | --Dir x
        an empty value stands                  | --dir ~ a        |          | a
        with = it is another word              | --dir=x          | fallback | --dir=x)")) {
        SCOPED_TRACE(row[0].toStdString());
        QStringList list = args(row[1]).replaceInStrings("~", "");
        EXPECT_EQ(takeOption(list, "--dir", "fallback"), row[2]);
        EXPECT_EQ(list, args(row[3]));
    }
}

TEST(TakeFlag, RemovesEveryOccurrence) {
    for (const QStringList& row : rows(R"(
        a b                         | no  | a b
        --yes                       | yes |
        --yes a --yes --yes b --yes | yes | a b
        --yes=1 --Yes               | no  | --yes=1 --Yes)")) {
        SCOPED_TRACE(row[0].toStdString());
        QStringList list = args(row[0]);
        EXPECT_EQ(takeFlag(list, "--yes"), row[1] == "yes");
        EXPECT_EQ(list, args(row[2]));
    }
}

}  // namespace quorvelle::testing
