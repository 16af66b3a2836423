#include <fcntl.h>
#include <io.h>
#include <windows.h>

#include <qlogging.h>
#include <QString>
#include <cstdio>
#include <cstdlib>

#include "console/console.h"
#include "console/output.h"

namespace quorvelle {

void prepareConsole() {
    SetConsoleOutputCP(CP_UTF8);
    // Text mode would turn every line end into two characters and break the
    // bytes that scripts read.
    _setmode(_fileno(stdout), _O_BINARY);
    _setmode(_fileno(stderr), _O_BINARY);
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
    const auto handle = reinterpret_cast<HANDLE>(_get_osfhandle(_fileno(stream)));
    return GetConsoleMode(handle, &mode) != 0;
}

}  // namespace quorvelle
