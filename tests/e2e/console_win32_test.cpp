#include <windows.h>

#include <QCoreApplication>
#include <QProcess>
#include <array>
#include <thread>

#include "support/fake_server.h"
#include "support/process_runner.h"

namespace quorvelle::testing {
namespace {

/// The test's own program is started twice more: in a console, and there as the one that `run`
/// starts. This variable tells what it is.
constexpr char kRole[] = "QUORVELLE_TEST_ROLE";
constexpr wchar_t kReady[] = L"quorvelle-test-ready";
constexpr wchar_t kOver[] = L"quorvelle-test-over";
constexpr DWORD kLimitMs = 20000;
constexpr int kInterrupted = 42;
/// Any but the one of the program's text.
constexpr UINT kCodePage = 437;

const QString kThisTest = QStringLiteral("--gtest_filter=Console.IsLeftAsItWasFound");

/// Starts this program in a console of its own, with this one's streams, and waits for it.
DWORD runInConsole() {
    std::array<HANDLE, 4> ends{};
    CreatePipe(&ends[0], &ends[1], nullptr, 0);
    CreatePipe(&ends[2], &ends[3], nullptr, 0);
    HPCON console = nullptr;
    EXPECT_EQ(CreatePseudoConsole({80, 25}, ends[0], ends[3], 0, &console), S_OK);
    std::thread screen([&] {
        std::array<char, 1024> shown{};
        for (DWORD size = 0;
             ReadFile(ends[2], shown.data(), DWORD(shown.size()), &size, nullptr);) {
        }
    });
    std::array<char, 256> memory{};
    SIZE_T size = memory.size();
    STARTUPINFOEXW start = {};
    start.StartupInfo.cb = sizeof(start);
    start.lpAttributeList = reinterpret_cast<LPPROC_THREAD_ATTRIBUTE_LIST>(memory.data());
    InitializeProcThreadAttributeList(start.lpAttributeList, 1, 0, &size);
    UpdateProcThreadAttribute(start.lpAttributeList, 0, PROC_THREAD_ATTRIBUTE_PSEUDOCONSOLE,
                              console, sizeof(console), nullptr, nullptr);
    start.StartupInfo.dwFlags = STARTF_USESTDHANDLES;
    start.StartupInfo.hStdOutput = GetStdHandle(STD_OUTPUT_HANDLE);
    start.StartupInfo.hStdError = GetStdHandle(STD_ERROR_HANDLE);
    std::wstring line =
        ('"' + QCoreApplication::applicationFilePath() + "\" " + kThisTest).toStdWString();
    PROCESS_INFORMATION child = {};
    EXPECT_NE(
        CreateProcessW(nullptr, line.data(), nullptr, nullptr, TRUE, EXTENDED_STARTUPINFO_PRESENT,
                       nullptr, nullptr, &start.StartupInfo, &child),
        0);
    DWORD code = STILL_ACTIVE;
    WaitForSingleObject(child.hProcess, 4 * kLimitMs);
    GetExitCodeProcess(child.hProcess, &code);
    ClosePseudoConsole(console);
    CloseHandle(ends[3]);
    screen.join();
    return code;
}

/// What `run` starts: ends in a way of its own at Ctrl-C, else when all is over.
[[noreturn]] void beTheProgram() {
    static const HANDLE interrupted = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    SetConsoleCtrlHandler([](DWORD) -> BOOL { return SetEvent(interrupted); }, TRUE);
    SetEvent(OpenEventW(EVENT_MODIFY_STATE, FALSE, kReady));
    const std::array<HANDLE, 2> ends{interrupted, OpenEventW(SYNCHRONIZE, FALSE, kOver)};
    const DWORD end = WaitForMultipleObjects(DWORD(ends.size()), ends.data(), FALSE, 2 * kLimitMs);
    ExitProcess(end == WAIT_OBJECT_0 ? kInterrupted : 1);
}

/// Runs of quorvelle in this process's console.
class InConsole {
public:
    InConsole() {
        SetConsoleOutputCP(kCodePage);
        SetConsoleMode(out, kMode);
        // Ctrl-C is for the others.
        SetConsoleCtrlHandler([](DWORD) -> BOOL { return TRUE; }, TRUE);
        box.environment.insert(kRole, "program");
    }
    ~InConsole() { CloseHandle(out); }
    InConsole(const InConsole&) = delete;
    InConsole& operator=(const InConsole&) = delete;

    /// The exit code; with an event, after Ctrl-C was typed upon that.
    DWORD run(const QStringList& words, HANDLE ready = nullptr) {
        QProcess process;
        process.setProcessEnvironment(box.environment);
        process.setCreateProcessArgumentsModifier(
            [this](QProcess::CreateProcessArguments* arguments) {
                arguments->flags &= ~DWORD{CREATE_NO_WINDOW};
                arguments->startupInfo->hStdOutput = out;
                arguments->startupInfo->hStdError = out;
            });
        process.start(quorvelleProgram(), words);
        EXPECT_TRUE(process.waitForStarted());
        if (ready != nullptr) {
            EXPECT_EQ(WaitForSingleObject(ready, kLimitMs), WAIT_OBJECT_0);
            GenerateConsoleCtrlEvent(CTRL_C_EVENT, 0);
        }
        EXPECT_TRUE(process.waitForFinished(kLimitMs));
        EXPECT_EQ(GetConsoleOutputCP(), kCodePage);
        DWORD mode = 0;
        EXPECT_NE(GetConsoleMode(out, &mode), 0);
        EXPECT_EQ(mode, kMode);
        return DWORD(process.exitCode());
    }
    std::wstring screen() const {
        std::wstring text(80 * 25, L' ');
        DWORD size = 0;
        ReadConsoleOutputCharacterW(out, text.data(), DWORD(text.size()), {}, &size);
        return text.substr(0, size);
    }

    Sandbox box;

private:
    static constexpr DWORD kMode = ENABLE_PROCESSED_OUTPUT | ENABLE_WRAP_AT_EOL_OUTPUT;
    SECURITY_ATTRIBUTES inherited{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
    const HANDLE out =
        CreateFileW(L"CONOUT$", GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                    &inherited, OPEN_EXISTING, 0, nullptr);
};

}  // namespace

TEST(Console, IsLeftAsItWasFound) {
    const QByteArray role = qgetenv(kRole);
    if (role.isEmpty()) {
        qputenv(kRole, "console");
        EXPECT_EQ(runInConsole(), 0U);
        qunsetenv(kRole);
        return;
    }
    if (role == "program") {
        beTheProgram();
    }
    const HANDLE ready = CreateEventW(nullptr, FALSE, FALSE, kReady);
    const HANDLE over = CreateEventW(nullptr, TRUE, FALSE, kOver);
    FakeServer server;
    InConsole console;
    const QFileInfo self(QCoreApplication::applicationFilePath());
    server.onJson(
        "GET", "/api/channels/c",
        {{"launch_targets",
          QJsonArray{QJsonObject{{"label", "T"}, {"exe", self.fileName()}, {"args", kThisTest}}}}});
    server.on("GET", "/api/channels/silent", [&](const auto&, auto&) {
        SetEvent(ready);
        WaitForSingleObject(over, 2 * kLimitMs);
    });
    const auto subscription = [&](const QString& name) {
        return QJsonObject{
            {"name", name}, {"server", server.url()}, {"channel", name}, {"dir", self.path()}};
    };
    console.box.writeConfig(
        {{"server", "http://größe-ЖЩ"}, {"subscriptions", QJsonArray{subscription("c")}}});
    EXPECT_EQ(console.run(args("config get server")), 0U);
    EXPECT_NE(console.screen().find(L"http://größe-ЖЩ "), std::wstring::npos);
    EXPECT_EQ(console.run(args("run --wait c"), ready), DWORD{kInterrupted});
    EXPECT_EQ(console.run(args("run c")), 0U);
    EXPECT_EQ(WaitForSingleObject(ready, kLimitMs), WAIT_OBJECT_0);
    std::array<DWORD, 4> others{};
    EXPECT_EQ(GetConsoleProcessList(others.data(), DWORD(others.size())), 1U);
    // Wine makes 0 of the code that tells of Ctrl-C.
    console.run(args("channel launch list silent --server ") + QStringList(server.url()), ready);
    SetEvent(over);
    CloseHandle(ready);
}

}  // namespace quorvelle::testing
