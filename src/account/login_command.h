#pragma once

#include <QStringList>

namespace quorvelle {

/// login <server> [--install-root <path>] [--no-browser]: signs in through the browser,
/// stores the token, and brings the subscriptions in line with the server's assignments.
int loginCommand(QStringList args);

}  // namespace quorvelle
