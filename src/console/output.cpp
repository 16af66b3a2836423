#include "console/output.h"

#include <QByteArray>
#include <QJsonDocument>
#include <cstdio>

#include "console/console.h"

namespace quorvelle {

namespace {

bool jsonModeOn = false;

void writeTo(std::FILE* stream, const QByteArray& bytes) {
    std::fwrite(bytes.constData(), 1, static_cast<std::size_t>(bytes.size()), stream);
    std::fflush(stream);
}

}  // namespace

void setJsonMode(bool on) {
    jsonModeOn = on;
}

bool jsonMode() {
    return jsonModeOn;
}

void print(const QString& text) {
    writeTo(stdout, text.toUtf8());
}

void printDiagnostic(const QString& text) {
    writeTo(stderr, text.toUtf8());
}

void printNote(const QString& text) {
    if (!jsonModeOn && isTerminal(stderr)) {
        printDiagnostic(text + u'\n');
    }
}

void printError(const QString& text) {
    if (jsonModeOn) {
        printJson({{QStringLiteral("error"), text}});
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

void printJson(const QJsonObject& object) {
    writeTo(stdout, QJsonDocument(object).toJson(QJsonDocument::Compact) + '\n');
}

void printResult(const QJsonObject& object, const QString& text) {
    if (jsonModeOn) {
        printJson(object);
    } else {
        print(text);
    }
}

}  // namespace quorvelle
