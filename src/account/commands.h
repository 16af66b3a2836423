#pragma once

#include <QStringList>

/// The commands by which a person gets and keeps an account at a server: handlers of the
/// command table.

namespace quorvelle {

/// join <server> <code> [--install-root <path>] [--machine <name>]: redeems an invite,
/// stores the token that it gives, and subscribes the channels that come with it.
int joinCommand(QStringList args);

/// login <server> [--install-root <path>] [--no-browser]: signs in through the browser,
/// stores the token, and brings the subscriptions in line with the server's assignments.
int loginCommand(QStringList args);

/// reconcile: brings the subscriptions of every joined server in line with its
/// assignments. A server that fails does not keep the others from being asked.
int reconcileCommand(QStringList args);

}  // namespace quorvelle
