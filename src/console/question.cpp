#include "console/question.h"

#include <QByteArray>
#include <cstdio>

#include "console/output.h"
#include "console/terminal.h"

namespace quorvelle {

namespace {

bool answeredYes = false;

/// Up to the line end, without it.
QByteArray typedLine() {
    QByteArray line;
    int byte = std::fgetc(stdin);
    while (byte != EOF && byte != '\n') {
        line += static_cast<char>(byte);
        byte = std::fgetc(stdin);
    }
    if (byte == EOF) {
        print(QStringLiteral("\n"));
    }
    return line.trimmed().toLower();
}

}  // namespace

void setAnsweredYes(bool yes) {
    answeredYes = yes;
}

bool confirmed(const QString& question) {
    if (answeredYes || !terminalOf(stdin).isThere || !terminalOf(stdout).isThere) {
        return true;
    }
    print(withVisibleControls(question) + QStringLiteral(" [y/N] "));
    const QByteArray answer = typedLine();
    if (answer == "y" || answer == "yes") {
        return true;
    }
    printNote(QStringLiteral("Nothing was changed."));
    return false;
}

}  // namespace quorvelle
