#pragma once

#include <QStringList>

namespace quorvelle {

/// config [list] | get <key> | set <key> <value>: the default server and token, and an
/// overview of the configuration. Never talks to a server.
int configCommand(QStringList args);

}  // namespace quorvelle
