#pragma once

#include <QStringList>

/// Invites, by whose codes people join a server. Handlers as the command table wants them.

namespace quorvelle {

/// `invite create <user> [--groups <a,b>] [--days <n>]`: shows the code this once.
int inviteCreateCommand(QStringList args);

/// `invite revoke <id>`.
int inviteRevokeCommand(QStringList args);

/// `invites`: those that nobody has redeemed.
int invitesCommand(QStringList args);

}  // namespace quorvelle
