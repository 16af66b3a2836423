#pragma once

#include <QStringList>

namespace quorvelle {

/// join <server> <code> [--install-root <path>] [--machine <name>]: redeems an invite,
/// stores the token that it gives, and subscribes the channels that come with it.
int joinCommand(QStringList args);

}  // namespace quorvelle
