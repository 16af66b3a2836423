#include <fcntl.h>
#include <qlogging.h>
#include <sys/ioctl.h>
#include <unistd.h>
#include <QString>
#include <csignal>
#include <cstdlib>

#include "console/console.h"
#include "console/output.h"

namespace quorvelle {

namespace {

constexpr int kUsualColumns = 80;

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
