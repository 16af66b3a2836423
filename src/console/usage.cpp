#include "console/usage.h"

#include <QCoreApplication>

#include <cstdio>

#include "console/exit_code.h"
#include "console/mistake.h"
#include "console/output.h"
#include "console/question.h"
#include "console/terminal.h"
#include "console/usage_forms.h"

namespace quorvelle {

namespace {

CommandTable usageTable;
const Command* typedRow = nullptr;
QStringList typedWords;

/// The ways in which the command can be written, with the answer that its usage lines keep to
/// themselves.
QList<UsageForm> formsOf(const Command& command) {
    QList<UsageForm> forms = usageForms(rowShowing(command, usageTable));
    if (command.asksFirst) {
        for (UsageForm& form : forms) {
            form.options.append(
                {.name = QString::fromLatin1(kYesOption), .value = {}, .isNeeded = false});
        }
    }
    return forms;
}

}  // namespace

QString usageText(CommandTable table) {
    QString text =
        QStringLiteral("Quorvelle CLI %1\n\nUsage:\n").arg(QCoreApplication::applicationVersion());
    for (const Command& command : table) {
        text += QString::fromUtf8(command.usage.data(), qsizetype(command.usage.size()));
    }
    return text + QStringLiteral("\nGlobal:\n  --json         %1\n").arg(kJsonOptionText);
}

void setUsageTable(CommandTable table) {
    usageTable = table;
}

void setTypedLine(const Command& command, const QStringList& typed) {
    typedRow = &command;
    typedWords = typed;
}

int printUsage() {
    if (typedRow != nullptr && terminalOf(stderr).isThere) {
        printDiagnostic(Lines{mistakeIn(typedWords, formsOf(*typedRow))});
    }
    const bool isForPerson = typedRow != nullptr && terminalOf(stdout).isThere;
    print(isForPerson ? usageLines(*typedRow, usageTable) : usageText(usageTable));
    return kExitUsage;
}

int printHelp(const QString& lines) {
    print(lines);
    return terminalOf(stdout).isThere ? kExitSuccess : kExitUsage;
}

}  // namespace quorvelle
