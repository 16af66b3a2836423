#include "cli/commands.h"

#include <QCoreApplication>

#include "console/exit_code.h"
#include "console/output.h"

namespace quorvelle {

int versionCommand(QStringList) {
    const QString version = QCoreApplication::applicationVersion();
    printResult({{QStringLiteral("version"), version}}, version + u'\n');
    return kExitSuccess;
}

}  // namespace quorvelle
