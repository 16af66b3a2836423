#pragma once

#include <QStringList>

namespace quorvelle {

/// `whoami`: whom the server takes this client for, and what is assigned to that user.
int whoamiCommand(QStringList args);

}  // namespace quorvelle
