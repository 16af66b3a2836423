#pragma once

#include <QJsonObject>
#include <QString>
#include <QStringList>

namespace quorvelle {

/// reconcile: brings the subscriptions of every joined server in line with its
/// assignments. A server that fails does not keep the others from being asked.
int reconcileCommand(QStringList args);

/// What reconciling came to; an error has been printed when not `ok`.
struct Reconciled {
    bool ok = true;
    /// The lines of what was changed.
    QStringList changes = {};
};

/// Reconciles the server of a "servers" entry and waits for the end.
Reconciled reconcileServer(const QJsonObject& serverEntry);

/// The change lines as text mode shows them; without any, that everything matches, unless
/// there was a failure. Each line has its end.
QString changesText(const Reconciled& outcome);

/// The object with the change lines added as "changes".
QJsonObject withChanges(QJsonObject object, const Reconciled& outcome);

}  // namespace quorvelle
