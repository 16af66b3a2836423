#include "config/json_number.h"

#include <gmock/gmock.h>

#include "support/notation.h"

namespace quorvelle::testing {

/// The cells: a value, the number, the whole number where 7 stands for none.
TEST(JsonNumbers, MayBeSentAsText) {
    for (const QStringList& row : rows(R"(
        3                    | 3    | 3
        '3'                  | 3    | 3
        '-1'                 | -1   | -1
        2.5                  | 2.5  | 7
        '2.5'                | 2.5  | 7
        '1e3'                | 1000 | 1000
        9007199254740993     | 9007199254740992 | 9007199254740993
        '9007199254740993'   | 9007199254740992 | 9007199254740993
        '3 seats'            | none | 7
        '0x10'               | none | 7
        'inf'                | none | 7
        'nan'                | none | 7
        ''                   | none | 7
        true                 | none | 7
        [3]                  | none | 7
        null                 | none | 7)")) {
        SCOPED_TRACE(row[0].toStdString());
        const QJsonValue value = json("{'v':" + row[0].toUtf8() + '}')["v"];
        EXPECT_EQ(numberIn(value),
                  row[1] == "none" ? std::nullopt : std::optional(row[1].toDouble()));
        EXPECT_EQ(wholeNumberIn(value, 7), row[2].toLongLong());
    }
}

}  // namespace quorvelle::testing
