#pragma once

#include <QStringList>

namespace quorvelle {

/// server set-root <url> <path>: moves a joined server's install root and with it the
/// directories of its subscriptions. Nothing on disk is touched.
int setServerRootCommand(QStringList args);

/// server set-token <url> <token>: stores a server's token, also on its subscriptions.
int setServerTokenCommand(QStringList args);

}  // namespace quorvelle
