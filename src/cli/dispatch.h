#pragma once

#include <QStringList>

#include "cli/console/command.h"

namespace quorvelle {

/// Runs one command line: takes "--json" out wherever it stands, finds the first row
/// whose words and number of arguments match, and returns its handler's exit code.
/// `arguments` begins with the program's path. No command word prints the usage, words
/// that match no row are reported with it; both return kExitUsage.
int dispatch(QStringList arguments, CommandTable table);

}  // namespace quorvelle
