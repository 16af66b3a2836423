#include <QCoreApplication>
#include <chrono>

#include "cli/command_table.h"
#include "cli/dispatch.h"
#include "console/console.h"
#include "console/out_of_memory.h"
#include "console/output.h"
#include "console/usage.h"
#include "server/idle_watch.h"
#include "source_version.h"
#include "tide/engine.h"

namespace {

/// What both ways to the network have in common.
tide::Network engineNetwork() {
    const quorvelle::IdleLimits limits = quorvelle::idleLimits();
    return {.connectLimit = std::chrono::duration_cast<std::chrono::seconds>(limits.connect),
            .idleLimit = std::chrono::duration_cast<std::chrono::seconds>(limits.idle)};
}

}  // namespace

int main(int argc, char* argv[]) {
    quorvelle::endWhenOutOfMemory();
    quorvelle::prepareConsole();
    tide::startEngine(engineNetwork());
    const QCoreApplication application(argc, argv);
    QCoreApplication::setOrganizationName(QStringLiteral("Quorvelle"));
    QCoreApplication::setApplicationName(QStringLiteral("Quorvelle"));
    QCoreApplication::setApplicationVersion(QString::fromLatin1(quorvelle::kSourceVersion));
    quorvelle::setUsageTable(quorvelle::commandTable());
    return quorvelle::endOutput(
        quorvelle::dispatch(QCoreApplication::arguments(), quorvelle::commandTable()));
}
