#include "account/commands.h"

#include <QJsonArray>
#include <QSysInfo>

#include "account/reconcile_command.h"
#include "account/session.h"
#include "config/server_url.h"
#include "console/arguments.h"
#include "console/exit_code.h"
#include "console/output.h"
#include "console/usage.h"
#include "server/requests.h"

namespace quorvelle {

namespace {

/// The text after the summary. Who has no channels yet is told that in the place of changes.
Lines endingText(const QJsonObject& answer, const Reconciled& outcome) {
    const bool none = answer.value(u"channels").toArray().isEmpty();
    return (none ? Lines{QStringLiteral("No channels assigned yet - subscriptions will appear "
                                        "automatically once your groups get assignments.")}
                 : changesText(outcome))
           << QStringLiteral("Run 'quorvelle sync' or let the client pick them up.");
}

}  // namespace

int joinCommand(QStringList args) {
    const QString root = takeOption(args, QStringLiteral("--install-root"));
    const QString machine =
        takeOption(args, QStringLiteral("--machine"), QSysInfo::machineHostName());
    const QString server = withoutTrailingSlashes(args.value(0));
    if (!areNames(args, 2) || server.isEmpty()) {
        return printUsage();
    }
    if (!canStoreSession(server, root)) {
        return kExitFailed;
    }
    const QString label = QStringLiteral("join");
    const Reply reply =
        postEmpty({.url = server}, QStringLiteral("/api/invites/redeem"), label,
                  {{QStringLiteral("code"), args.at(1)}, {QStringLiteral("machine"), machine}});
    if (!reply.ok) {
        return kExitFailed;
    }
    const auto entry = storeSession(server, reply.object, root, label);
    if (!entry) {
        return kExitFailed;
    }
    printProgress(sessionText(QStringLiteral("Joined"), server, reply.object));
    const Reconciled outcome = reconcileServer(*entry);
    printResult(withChanges(reply.object, outcome), endingText(reply.object, outcome));
    return outcome.ok ? kExitSuccess : kExitFailed;
}

}  // namespace quorvelle
