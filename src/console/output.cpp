#include "console/output.h"

#include <QByteArray>
#include <QJsonDocument>
#include <cerrno>
#include <cstdio>
#include <string>
#include <system_error>

#include "console/exit_code.h"
#include "console/terminal.h"

namespace quorvelle {

namespace {

bool jsonModeOn = false;

/// Why the first write to standard output that failed did so, as an errno; 0 while none did.
int outputError = 0;
/// Whether a text took the way of standard error because it is told only once.
bool wasDiverted = false;

/// 0, or why it failed as an errno.
int writeTo(std::FILE* stream, const QByteArray& bytes) {
    errno = 0;
    const auto size = static_cast<std::size_t>(bytes.size());
    const bool written =
        std::fwrite(bytes.constData(), 1, size, stream) == size && std::fflush(stream) == 0;
    return written ? 0 : errno == 0 ? EIO : errno;
}

void writeOutput(const QByteArray& bytes, Kept kept) {
    const int error = bytes.isEmpty() ? 0 : writeTo(stdout, bytes);
    if (error == 0) {
        return;
    }
    outputError = outputError == 0 ? error : outputError;
    if (kept == Kept::kAlways) {
        wasDiverted = true;
        writeTo(stderr, bytes);
    }
}

}  // namespace

void setJsonMode(bool on) {
    jsonModeOn = on;
}

bool jsonMode() {
    return jsonModeOn;
}

void print(const QString& text) {
    writeOutput(text.toUtf8(), Kept::kUsually);
}

void printDiagnostic(const QString& text) {
    writeTo(stderr, text.toUtf8());
}

void printNote(const QString& text) {
    if (terminalOf(stderr).isThere) {
        printDiagnostic(text + u'\n');
    }
}

void printError(const QString& text, Kept kept) {
    if (jsonModeOn) {
        printJson({{QStringLiteral("error"), text}}, kept);
    } else {
        printDiagnostic(text + u'\n');
    }
}

int failWith(int code, const QString& text) {
    printError(text);
    return code;
}

void printProgress(const QString& text) {
    if (!jsonModeOn) {
        print(text);
    }
}

void printJson(const QJsonObject& object, Kept kept) {
    writeOutput(QJsonDocument(object).toJson(QJsonDocument::Compact) + '\n', kept);
}

void printResult(const QJsonObject& object, const QString& text, Kept kept) {
    if (jsonModeOn) {
        printJson(object, kept);
    } else {
        writeOutput(text.toUtf8(), kept);
    }
}

int endOutput(int exitCode) {
    if (outputError == 0) {
        return exitCode;
    }
    if (outputError != EPIPE || wasDiverted) {
        const std::string reason = std::generic_category().message(outputError);
        printDiagnostic(
            QStringLiteral("could not write the output: %1\n").arg(QString::fromStdString(reason)));
    }
    return exitCode == kExitSuccess ? kExitFailed : exitCode;
}

}  // namespace quorvelle
