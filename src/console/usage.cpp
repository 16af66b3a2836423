#include "console/usage.h"

#include <QCoreApplication>

#include "console/exit_code.h"
#include "console/output.h"

namespace quorvelle {

namespace {

CommandTable usageTable;

}  // namespace

QString usageText(CommandTable table) {
    QString text =
        QStringLiteral("Quorvelle CLI %1\n\nUsage:\n").arg(QCoreApplication::applicationVersion());
    for (const Command& command : table) {
        text += QString::fromUtf8(command.usage.data(), qsizetype(command.usage.size()));
    }
    return text + QStringLiteral(
                      "\nGlobal:\n"
                      "  --json         machine-readable output (same exit codes)\n");
}

void setUsageTable(CommandTable table) {
    usageTable = table;
}

int printUsage() {
    print(usageText(usageTable));
    return kExitUsage;
}

}  // namespace quorvelle
