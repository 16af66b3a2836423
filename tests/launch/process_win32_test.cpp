#include "launch/process.h"

#include <windows.h>

#include <QCoreApplication>
#include <QFile>
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

TEST(BatchFiles, TakeNoLineEnds) {
    for (const char* argument : {"a\nb", "a\r", "\n"}) {
        EXPECT_NE(refusalOf({"cmd.exe", {"/c", "x.bat", argument}, {}}), QString());
        EXPECT_EQ(refusalOf({"C:/x.exe", {argument}, {}}), QString());
    }
    EXPECT_EQ(refusalOf({"cmd.exe", {"/c", "x.bat", "a b"}, {}}), QString());
}

TEST(Interpreters, AreTheSystemsOwn) {
    for (const char* name : {"cmd.exe", "powershell.exe"}) {
        QProcess process;
        configure(process, {name, {"/c", "x"}, {}});
        const QString program = process.program().toLower().replace('\\', '/');
        EXPECT_TRUE(program.startsWith("c:/windows/system32/") && program.endsWith(name))
            << program.toStdString();
        EXPECT_TRUE(QFile::exists(program));
    }
}

/// This test is also the program that is started, told apart by its environment.
TEST(DetachedPrograms, HaveNoneOfTheCallersHandles) {
    constexpr char kChild[] = "QUORVELLE_TEST_IS_DETACHED";
    constexpr wchar_t kEnd[] = L"quorvelle-test-end";
    constexpr DWORD kLimitMs = 20000;
    if (qEnvironmentVariableIsSet(kChild)) {
        WaitForSingleObject(OpenEventW(SYNCHRONIZE, FALSE, kEnd), kLimitMs);
        return;
    }
    const HANDLE end = CreateEventW(nullptr, TRUE, FALSE, kEnd);
    SECURITY_ATTRIBUTES inheritable{sizeof(inheritable), nullptr, TRUE};
    HANDLE reading = nullptr;
    HANDLE writing = nullptr;
    ASSERT_NE(CreatePipe(&reading, &writing, &inheritable, 0), 0);
    qputenv(kChild, "1");
    const ProcessResult started = startDetached(
        {QCoreApplication::applicationFilePath(), {"--gtest_filter=DetachedPrograms.*"}, "C:/"});
    qunsetenv(kChild);
    CloseHandle(writing);
    ASSERT_TRUE(started.value) << started.reason.toStdString();
    const HANDLE program = OpenProcess(SYNCHRONIZE | PROCESS_QUERY_INFORMATION, FALSE,
                                       static_cast<DWORD>(*started.value));
    char byte = 0;
    EXPECT_EQ(ReadFile(reading, &byte, 1, nullptr, nullptr), 0) << "the end of the pipe";
    EXPECT_EQ(WaitForSingleObject(program, 0), DWORD{WAIT_TIMEOUT}) << "lives on";
    SetEvent(end);
    EXPECT_EQ(WaitForSingleObject(program, kLimitMs), DWORD{WAIT_OBJECT_0});
    DWORD code = 1;
    EXPECT_NE(GetExitCodeProcess(program, &code), 0);
    EXPECT_EQ(code, 0U);
    for (const HANDLE handle : {reading, program, end}) {
        CloseHandle(handle);
    }
}

}  // namespace quorvelle::testing
