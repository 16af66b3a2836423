#pragma once

#include <QStringList>

namespace quorvelle {

/// `token create <name> --user <service-account>`: a token for a service account, shown
/// this once.
int tokenCreateCommand(QStringList args);

}  // namespace quorvelle
