#include "cli/dispatch.h"

#include <gmock/gmock.h>

#include "console/output.h"
#include "support/notation.h"

namespace quorvelle::testing {

namespace {

/// What the handler that ran was given; every handler notes it here.
QString called;

template <int code>
int note(QStringList rest) {
    called = QString("%1(%2)").arg(QString::number(code), rest.join(u' '));
    called += jsonMode() ? " json" : "";
    return code;
}

constexpr Command kTable[] = {
    {.words = "pack open now", .handler = note<10>, .usage = "  quorvelle pack open now\n"},
    {.words = "pack open", .leastArguments = 2, .mostArguments = 2, .handler = note<11>},
    {.words = "pack", .leastArguments = 1, .handler = note<12>},
    {.words = "list", .handler = note<13>},
};

struct Dispatched {
    int code;
    std::string out;
    std::string err;
};

Dispatched dispatched(const QString& line, CommandTable table) {
    called.clear();
    ::testing::internal::CaptureStdout();
    ::testing::internal::CaptureStderr();
    const int code = dispatch(args("quorvelle " + line), table);
    setJsonMode(false);
    return {code, ::testing::internal::GetCapturedStdout(),
            ::testing::internal::GetCapturedStderr()};
}

}  // namespace

TEST(Dispatch, HandsTheFirstMatchingRowWhatFollowsItsWords) {
    for (const QStringList& row : rows(R"(
        list                                         | 13()
        pack open now a                              | 10(a)
        pack open a b                                | 11(a b)
        pack open a                                  | 12(open a)
        pack open a b c                              | 12(open a b c)
        list --json a                                | 13(a) json
        --json pack --json open --json now a --json  | 10(a) json
        list --JSON --json=1                         | 13(--JSON --json=1))")) {
        SCOPED_TRACE(row[0].toStdString());
        const Dispatched ran = dispatched(row[0], kTable);
        EXPECT_EQ(ran.code, row[1].left(2).toInt());
        EXPECT_EQ(called, row[1]);
        EXPECT_EQ(ran.out + ran.err, "");
    }
}

}  // namespace quorvelle::testing
