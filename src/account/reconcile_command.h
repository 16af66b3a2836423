#pragma once

#include <QJsonObject>
#include <QString>
#include <QStringList>

#include "console/shown_text.h"

namespace quorvelle {

/// What reconciling came to; an error has been printed when not `ok`.
struct Reconciled {
    bool ok = true;
    /// The lines of what was changed.
    QStringList changes = {};
};

/// Reconciles the server of a "servers" entry and waits for the end.
Reconciled reconcileServer(const QJsonObject& serverEntry);

/// The change lines as text mode shows them; without any, that everything matches, unless
/// there was a failure.
Lines changesText(const Reconciled& outcome);

/// The object with the change lines added as "changes".
QJsonObject withChanges(QJsonObject object, const Reconciled& outcome);

}  // namespace quorvelle
