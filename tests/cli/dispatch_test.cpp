#include "cli/dispatch.h"

#include <gmock/gmock.h>

#include "cli/command_table.h"
#include "cli/console/output.h"
#include "cli/console/usage.h"
#include "support/notation.h"
#include "support/qt_printers.h"

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

struct Ran {
    int code;
    std::string out;
    std::string err;
};

Ran run(const QString& line, CommandTable table) {
    called.clear();
    setUsageTable(table);
    ::testing::internal::CaptureStdout();
    ::testing::internal::CaptureStderr();
    const int code = dispatch(args(line), table);
    setJsonMode(false);
    setUsageTable({});
    return {code, ::testing::internal::GetCapturedStdout(),
            ::testing::internal::GetCapturedStderr()};
}

}  // namespace

TEST(Dispatch, HandsTheFirstMatchingRowWhatFollowsItsWords) {
    struct Row {
        const char* line;
        int code;
        const char* called;
    };
    for (const Row& row : {
             Row{"quorvelle list", 13, "13()"},
             Row{"quorvelle list list --x", 13, "13(list --x)"},
             Row{"quorvelle pack open now", 10, "10()"},
             Row{"quorvelle pack open now a", 10, "10(a)"},
             Row{"quorvelle pack open a b", 11, "11(a b)"},
             Row{"quorvelle pack open a", 12, "12(open a)"},
             Row{"quorvelle pack open a b c", 12, "12(open a b c)"},
             Row{"quorvelle --json list a", 13, "13(a) json"},
             Row{"quorvelle list --json a", 13, "13(a) json"},
             Row{"quorvelle list a --json", 13, "13(a) json"},
             Row{"quorvelle --json pack --json open --json now a --json", 10, "10(a) json"},
             Row{"--json quorvelle list", 13, "13() json"},
             Row{"quorvelle list --JSON --json=1", 13, "13(--JSON --json=1)"},
         }) {
        SCOPED_TRACE(row.line);
        const Ran ran = run(row.line, kTable);
        EXPECT_EQ(ran.code, row.code);
        EXPECT_EQ(called, QString(row.called));
        EXPECT_EQ(ran.out + ran.err, "");
    }
}

TEST(Dispatch, AnswersEverythingElseWithTheUsage) {
    struct Row {
        const char* line;
        const char* err;
    };
    for (const Row& row : {
             Row{"quorvelle", ""},
             Row{"quorvelle --json", ""},
             Row{"quorvelle --json --json", ""},
             Row{"quorvelle pack", "Unknown command 'pack'\n\n"},
             Row{"quorvelle --json pack", "Unknown command 'pack'\n\n"},
             Row{"quorvelle List", "Unknown command 'List'\n\n"},
             Row{"quorvelle lis", "Unknown command 'lis'\n\n"},
             Row{"quorvelle open now", "Unknown command 'open'\n\n"},
             Row{"quorvelle --help list", "Unknown command '--help'\n\n"},
             Row{"quorvelle 100%1", "Unknown command '100%1'\n\n"},
         }) {
        SCOPED_TRACE(row.line);
        const Ran ran = run(row.line, kTable);
        EXPECT_EQ(ran.code, 1);
        EXPECT_EQ(called, QString());
        EXPECT_EQ(ran.out, usageText(kTable).toStdString());
        EXPECT_EQ(ran.err, row.err);
    }
}

TEST(Dispatch, PrintsTheVersionInBothModes) {
    for (const char* word : {"version", "--version", "version surplus"}) {
        SCOPED_TRACE(word);
        EXPECT_EQ(run(QString("quorvelle ") + word, commandTable()).out, "1.2.3+gtest\n");
        const Ran json = run(QString("quorvelle --json ") + word, commandTable());
        EXPECT_EQ(json.out, "{\"version\":\"1.2.3+gtest\"}\n");
        EXPECT_EQ(json.code, 0);
    }
}

}  // namespace quorvelle::testing
