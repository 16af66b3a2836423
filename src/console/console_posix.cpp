#include <fcntl.h>
#include <qlogging.h>
#include <unistd.h>
#include <QString>
#include <csignal>
#include <cstdlib>

#include "console/console.h"
#include "console/output.h"

namespace quorvelle {

namespace {

/// Without this, a process started with a closed stream would open its next file in the
/// stream's place and print into it.
void occupyStandardStreams() {
    int descriptor = 0;
    do {
        descriptor = ::open("/dev/null", O_RDWR);
    } while (descriptor >= STDIN_FILENO && descriptor <= STDERR_FILENO);
    if (descriptor > STDERR_FILENO) {
        ::close(descriptor);
    }
}

}  // namespace

void prepareConsole() {
    occupyStandardStreams();
    // A write past the file-size limit must fail like one to a full disk, so that
    // the command can report it and leave the old file whole.
    std::signal(SIGXFSZ, SIG_IGN);
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

}  // namespace quorvelle
