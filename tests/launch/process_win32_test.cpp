#include "launch/process.h"

#include <gmock/gmock.h>

#include <QProcess>

#include "support/notation.h"

namespace quorvelle::testing {

/// Wine's cmd.exe expands "%" twice in a batch file, so a batch file is tried with the
/// simpler ones alone.
TEST(BatchFiles, AreStartedWithArgumentsThatCmdPassesOnWhole) {
    for (const QStringList& row : rows(R"(
        a-b/c:d\      | a-b/c:d\
        a b           | "a b"
        a b\          | "a b\\"
        x&y           | "x&y"
        say "hi"&     | "say ""hi""&"
        \\"           | "\\\\"""
        100%          | "100%%cd:~,%"
        %NAME%        | "%%cd:~,%NAME%%cd:~,%"
                      | "")")) {
        SCOPED_TRACE(row[0].toStdString());
        QProcess process;
        configure(process, {"cmd.exe", {"/c", R"(C:\my app\x.bat)", row[0], "z"}, "C:/my app"});
        EXPECT_EQ(process.nativeArguments(), R"(/c ""C:\my app\x.bat" )" + row[1] + " z\"");
        EXPECT_EQ(process.workingDirectory(), QString("C:/my app"));
    }
}

}  // namespace quorvelle::testing
