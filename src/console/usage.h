#pragma once

#include <QString>

#include "console/command.h"

namespace quorvelle {

/// The whole usage text for a table: heading with the application version, one
/// or more lines per command, the global option.
QString usageText(CommandTable table);

/// Names the table that printUsage shows. Called once at start, so that handlers
/// can print the usage without knowing the table. The table must outlive the run.
void setUsageTable(CommandTable table);

/// Prints the usage text on standard output, in JSON mode too, and returns
/// kExitUsage, the code of every command line that ends in it.
int printUsage();

}  // namespace quorvelle
