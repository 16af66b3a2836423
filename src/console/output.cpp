#include "console/output.h"

#include <QByteArray>
#include <QJsonDocument>
#include <cerrno>
#include <cstdio>
#include <string>
#include <system_error>

#include "console/console.h"
#include "console/exit_code.h"
#include "console/terminal.h"

namespace quorvelle {

namespace {

bool jsonModeOn = false;

constexpr const char* kEraseBelow = "\x1B[J";

/// Why the first write to standard output that failed did so, as an errno; 0 while none did.
int outputError = 0;
/// Whether a text took the way of standard error because it is told only once.
bool wasDiverted = false;

/// The line at the foot of the terminal.
QByteArray status;

/// 0, or why it failed as an errno.
int writeBytes(std::FILE* stream, const QByteArray& bytes) {
    errno = 0;
    const auto size = static_cast<std::size_t>(bytes.size());
    const bool written =
        std::fwrite(bytes.constData(), 1, size, stream) == size && std::fflush(stream) == 0;
    return written ? 0 : errno == 0 ? EIO : errno;
}

void drawStatus() {
    // The cursor stays at its beginning: where a window gets narrower and breaks the line in
    // two, all of it is still what follows the cursor.
    writeBytes(stderr, '\r' + status + kEraseBelow + '\r');
}

int writeTo(std::FILE* stream, const QByteArray& bytes) {
    const bool scrolls = !status.isEmpty() && terminalOf(stream).isThere;
    if (scrolls) {
        writeBytes(stderr, kEraseLine);
    }
    const int error = writeBytes(stream, bytes);
    if (scrolls) {
        drawStatus();
    }
    return error;
}

QByteArray linesFor(std::FILE* stream, const Lines& lines) {
    const bool isTerminal = terminalOf(stream).isThere;
    QString text;
    for (const QString& line : lines) {
        const QString shown = withoutPasswords(line);
        text += (isTerminal ? withVisibleControls(shown) : shown) + u'\n';
    }
    return text.toUtf8();
}

/// A text whose line ends are all our own.
QByteArray ownTextFor(std::FILE* stream, const QString& text) {
    const QString shown = withoutPasswords(text);
    return (terminalOf(stream).isThere ? withVisibleControlsInLines(shown) : shown).toUtf8();
}

/// The text of a caller who has one line, mostly with its end.
Lines oneLine(const QString& text) {
    return text.isEmpty() ? Lines() : Lines{text.endsWith(u'\n') ? text.chopped(1) : text};
}

/// Returns whether standard output took it.
bool writeOutput(const QByteArray& bytes) {
    const int error = bytes.isEmpty() ? 0 : writeTo(stdout, bytes);
    outputError = outputError == 0 ? error : outputError;
    return error == 0;
}

void writeLines(const Lines& lines, Kept kept) {
    if (!writeOutput(linesFor(stdout, lines)) && kept == Kept::kAlways) {
        wasDiverted = true;
        printDiagnostic(lines);
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
    writeOutput(ownTextFor(stdout, text));
}

void print(const Lines& lines) {
    writeLines(lines, Kept::kUsually);
}

void printDiagnostic(const QString& text) {
    writeTo(stderr, ownTextFor(stderr, text));
}

void printDiagnostic(const Lines& lines) {
    writeTo(stderr, linesFor(stderr, lines));
}

void printNote(const QString& line) {
    printNote(oneLine(line));
}

void printNote(const Lines& lines) {
    if (terminalOf(stderr).isThere) {
        printDiagnostic(lines);
    }
}

void printError(const QString& line, Kept kept) {
    printError(Lines{line}, kept);
}

void printError(const Lines& lines, Kept kept) {
    if (jsonModeOn) {
        printJson({{QStringLiteral("error"), withoutPasswords(lines.join(u'\n'))}}, kept);
    } else {
        printDiagnostic(lines);
    }
}

int failWith(int code, const QString& line) {
    printError(line);
    return code;
}

void printProgress(const QString& line) {
    printProgress(oneLine(line));
}

void printProgress(const Lines& lines) {
    if (!jsonModeOn) {
        print(lines);
    }
}

void printJson(const QJsonObject& object, Kept kept) {
    const QByteArray bytes = QJsonDocument(object).toJson(QJsonDocument::Compact) + '\n';
    if (!writeOutput(bytes) && kept == Kept::kAlways) {
        wasDiverted = true;
        writeTo(stderr, bytes);
    }
}

void printResult(const QJsonObject& object, const QString& line, Kept kept) {
    printResult(object, oneLine(line), kept);
}

void printResult(const QJsonObject& object, const Lines& lines, Kept kept) {
    if (jsonModeOn) {
        printJson(object, kept);
    } else {
        writeLines(lines, kept);
    }
}

void printValue(const QString& key, const QString& value) {
    if (jsonModeOn) {
        printJson({{key, value}});
    } else {
        const bool isTerminal = terminalOf(stdout).isThere;
        writeOutput((isTerminal ? withVisibleControls(value) : value).toUtf8() + '\n');
    }
}

void printEvent(const QJsonObject& event) {
    writeTo(stderr, QJsonDocument(event).toJson(QJsonDocument::Compact) + '\n');
}

void showStatus(const QString& line) {
    const QByteArray text = line.toUtf8();
    if (text == status || (!text.isEmpty() && !terminalOf(stderr).redraws)) {
        return;
    }
    status = text;
    if (status.isEmpty()) {
        writeBytes(stderr, kEraseLine);
        eraseAtInterrupt(false);
    } else {
        eraseAtInterrupt(true);
        drawStatus();
    }
}

int endOutput(int exitCode) {
    if (outputError == 0) {
        return exitCode;
    }
    if (outputError != EPIPE || wasDiverted) {
        const std::string reason = std::generic_category().message(outputError);
        printDiagnostic(Lines{
            QStringLiteral("could not write the output: %1").arg(QString::fromStdString(reason))});
    }
    return exitCode == kExitSuccess ? kExitFailed : exitCode;
}

}  // namespace quorvelle
