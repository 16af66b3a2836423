#pragma once

#include <QStringList>

namespace quorvelle {

/// version, --version: prints the program's version. Ignores further arguments.
int versionCommand(QStringList args);

}  // namespace quorvelle
