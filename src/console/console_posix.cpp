#include <fcntl.h>
#include <qlogging.h>
#include <sys/ioctl.h>
#include <unistd.h>
#include <QString>
#include <atomic>
#include <csignal>
#include <cstdlib>

#include "console/console.h"
#include "console/output.h"

namespace quorvelle {

namespace {

constexpr int kUsualColumns = 80;

std::atomic<bool> mustErase{false};
static_assert(std::atomic<bool>::is_always_lock_free, "used in a signal handler");

void eraseAndEnd(int signal) {
    if (mustErase.exchange(false)) {
        [[maybe_unused]] const ssize_t written =
            ::write(STDERR_FILENO, kEraseLine, sizeof(kEraseLine) - 1);
    }
    // The process ends by the signal, as it would have.
    std::signal(signal, SIG_DFL);
    ::raise(signal);
}

/// Without this, a process started with a closed stream would open its next file in the
/// stream's place and print into it. What is printed to a closed standard output still
/// fails, as it must for the command to tell of it.
void occupyStandardStreams() {
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (::fcntl(stream, F_GETFD) < 0) {
            // It takes the lowest free number, which is this one.
            ::open("/dev/null", stream == STDERR_FILENO ? O_WRONLY : O_RDONLY);
        }
    }
}

}  // namespace

void prepareConsole() {
    occupyStandardStreams();
    // A write past the file-size limit must fail like one to a full disk, so that
    // the command can report it and leave the old file whole.
    std::signal(SIGXFSZ, SIG_IGN);
    // And one to a pipe whose reader went away: the work is to be finished.
    std::signal(SIGPIPE, SIG_IGN);
    // Qt warns about a locale that is not UTF-8, which says nothing to the person
    // at the console; our own output is UTF-8 whatever the locale.
    qInstallMessageHandler([](QtMsgType type, const QMessageLogContext&, const QString& text) {
        if (type == QtFatalMsg) {
            printDiagnostic(text + u'\n');
            std::abort();
        }
    });
}

bool isTerminal(std::FILE* stream) {
    return ::isatty(::fileno(stream)) == 1;
}

void eraseAtInterrupt(bool on) {
    static bool isHandled = false;
    mustErase = on;
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        struct sigaction action = {};
        ::sigaction(signal, nullptr, &action);
        // What the process was started to ignore stays ignored.
        if (!isHandled && action.sa_handler == SIG_DFL) {
            std::signal(signal, eraseAndEnd);
        }
    }
    isHandled = true;
}

bool obeysSequences(std::FILE*) {
    const QByteArray kind = qgetenv("TERM");
    return !kind.isEmpty() && kind != "dumb";
}

int columnsOf(std::FILE* stream) {
    winsize size = {};
    const bool isKnown = ::ioctl(::fileno(stream), TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
    return isKnown ? size.ws_col : kUsualColumns;
}

}  // namespace quorvelle
