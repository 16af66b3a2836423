#include "account/reconcile_command.h"

#include <QEventLoop>
#include <QJsonArray>

#include "account/reconciler.h"
#include "config/config_file.h"
#include "console/arguments.h"
#include "console/exit_code.h"
#include "console/output.h"
#include "console/usage.h"

namespace quorvelle {

int reconcileCommand(QStringList args) {
    if (hasStrayOption(args)) {
        return printUsage();
    }
    Reconciled all;
    for (const QJsonValue& entry : config::load().value(u"servers").toArray()) {
        const Reconciled one = reconcileServer(entry.toObject());
        all.ok = all.ok && one.ok;
        all.changes += one.changes;
    }
    printResult(withChanges({}, all), changesText(all));
    return all.ok ? kExitSuccess : kExitFailed;
}

Reconciled reconcileServer(const QJsonObject& serverEntry) {
    Reconciled outcome;
    Reconciler reconciler;
    QEventLoop loop;
    QObject::connect(&reconciler, &Reconciler::finished, &loop,
                     [&](bool ok, const QStringList& errors, const QStringList& changes) {
                         outcome = {.ok = ok, .changes = changes};
                         if (!ok) {
                             printError(errors);
                         }
                         loop.quit();
                     });
    reconciler.start(serverEntry);
    loop.exec();
    return outcome;
}

Lines changesText(const Reconciled& outcome) {
    if (outcome.ok && outcome.changes.isEmpty()) {
        return {QStringLiteral("Subscriptions already match all server assignments.")};
    }
    return outcome.changes;
}

QJsonObject withChanges(QJsonObject object, const Reconciled& outcome) {
    object.insert(QStringLiteral("changes"), QJsonArray::fromStringList(outcome.changes));
    return object;
}

}  // namespace quorvelle
