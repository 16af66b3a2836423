#include <fcntl.h>
#include <io.h>
#include <windows.h>

#include <qlogging.h>
#include <QString>
#include <algorithm>
#include <array>
#include <atomic>
#include <cstdio>
#include <cstdlib>

#include "console/console.h"
#include "console/output.h"

namespace quorvelle {

namespace {

constexpr int kUsualWidth = 80;
constexpr std::size_t kBufferSize = 65536;

HANDLE handleOf(std::FILE* stream) {
    return reinterpret_cast<HANDLE>(_get_osfhandle(_fileno(stream)));
}

/// A console, and what it did with control sequences before.
struct Screen {
    HANDLE handle = INVALID_HANDLE_VALUE;
    DWORD modeBefore = 0;
    bool obeys = false;
};

/// Of standard output and standard error, which are mostly one console.
std::array<Screen, 2> screens;
UINT codePageBefore = 0;
std::atomic<bool> mustErase{false};

Screen takeScreen(std::FILE* stream) {
    Screen screen{.handle = handleOf(stream)};
    if (GetConsoleMode(screen.handle, &screen.modeBefore) == 0) {
        return {};
    }
    screen.obeys = SetConsoleMode(screen.handle, screen.modeBefore | ENABLE_PROCESSED_OUTPUT |
                                                     ENABLE_VIRTUAL_TERMINAL_PROCESSING) != 0;
    return screen;
}

/// At the end of the process, once, whichever of its threads comes to it first. The last
/// taken goes back first, for it found what the other had changed.
void giveBack() {
    static std::atomic<bool> done{false};
    if (done.exchange(true)) {
        return;
    }
    for (auto screen = screens.rbegin(); screen != screens.rend(); ++screen) {
        if (screen->obeys) {
            SetConsoleMode(screen->handle, screen->modeBefore);
        }
    }
    if (codePageBefore != 0) {
        SetConsoleOutputCP(codePageBefore);
    }
}

/// Ctrl-C and a closed window end the process without its exit functions.
BOOL WINAPI giveBackAndEnd(DWORD) {
    if (mustErase) {
        DWORD written = 0;
        WriteFile(handleOf(stderr), kEraseLine, sizeof(kEraseLine) - 1, &written, nullptr);
    }
    giveBack();
    return FALSE;
}

}  // namespace

void prepareConsole() {
    codePageBefore = GetConsoleOutputCP();
    SetConsoleOutputCP(CP_UTF8);
    screens = {takeScreen(stdout), takeScreen(stderr)};
    std::atexit(giveBack);
    SetConsoleCtrlHandler(giveBackAndEnd, TRUE);
    for (std::FILE* stream : {stdout, stderr}) {
        // Text mode would turn every line end into two characters and break the
        // bytes that scripts read.
        _setmode(_fileno(stream), _O_BINARY);
        // A console without a buffer gets its text byte by byte, which tears characters.
        // Whatever is printed is flushed at once.
        std::setvbuf(stream, nullptr, _IOFBF, kBufferSize);
    }
    qInstallMessageHandler([](QtMsgType type, const QMessageLogContext&, const QString& text) {
        if (type == QtFatalMsg) {
            printDiagnostic(text + u'\n');
            std::abort();
        }
    });
}

bool isTerminal(std::FILE* stream) {
    // Only a console has a mode; the C library takes every device for a terminal, the one
    // that swallows all output among them.
    DWORD mode = 0;
    return GetConsoleMode(handleOf(stream), &mode) != 0;
}

void eraseAtInterrupt(bool on) {
    mustErase = on;
}

bool obeysSequences(std::FILE* stream) {
    DWORD mode = 0;
    return GetConsoleMode(handleOf(stream), &mode) != 0 &&
           (mode & ENABLE_VIRTUAL_TERMINAL_PROCESSING) != 0 && qgetenv("TERM") != "dumb";
}

int columnsOf(std::FILE* stream) {
    CONSOLE_SCREEN_BUFFER_INFO screen = {};
    if (GetConsoleScreenBufferInfo(handleOf(stream), &screen) == 0) {
        return kUsualWidth;
    }
    return std::max(1, screen.srWindow.Right - screen.srWindow.Left + 1);
}

}  // namespace quorvelle
