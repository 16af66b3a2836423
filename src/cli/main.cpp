#include <QCoreApplication>

#include "cli/command_table.h"
#include "cli/dispatch.h"
#include "console/console.h"
#include "console/output.h"
#include "console/usage.h"
#include "source_version.h"
#include "tide/engine.h"

int main(int argc, char* argv[]) {
    quorvelle::prepareConsole();
    tide::startEngine();
    const QCoreApplication application(argc, argv);
    QCoreApplication::setOrganizationName(QStringLiteral("Quorvelle"));
    QCoreApplication::setApplicationName(QStringLiteral("Quorvelle"));
    QCoreApplication::setApplicationVersion(QString::fromLatin1(quorvelle::kSourceVersion));
    quorvelle::setUsageTable(quorvelle::commandTable());
    return quorvelle::endOutput(
        quorvelle::dispatch(QCoreApplication::arguments(), quorvelle::commandTable()));
}
