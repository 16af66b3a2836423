#pragma once

#include <QStringList>

#include "console/command.h"

namespace quorvelle {

/// The first row of the table whose words begin what was typed, with as many arguments
/// after them as the row asks for; null when there is none. `typed` begins with the
/// command word.
const Command* findCommand(const QStringList& typed, CommandTable table);

/// Runs one command line: takes "--json" out wherever it stands, and "--yes" where the
/// command would ask, finds the first row
/// whose words and number of arguments match, and returns its handler's exit code.
/// `arguments` begins with the program's path. Behind a command's words "--help" or "-h"
/// prints its usage lines and runs nothing. No command word prints the usage, words that
/// match no row are reported with it; both return kExitUsage. A person at a terminal sees
/// the overview in the place of the usage, and for an unknown word the command that was
/// probably meant.
int dispatch(QStringList arguments, CommandTable table);

}  // namespace quorvelle
