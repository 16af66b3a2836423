#pragma once

#include <QStringList>

namespace quorvelle {

/// `server-version`: the server's own name and version.
int serverVersionCommand(QStringList args);

}  // namespace quorvelle
