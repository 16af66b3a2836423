#pragma once

#include <QString>
#include <QStringList>

#include "console/command.h"

namespace quorvelle {

/// What the options are for that all commands have.
inline constexpr char kHelpOptionText[] = "show how the command is used, and do nothing";
inline constexpr char kJsonOptionText[] = "machine-readable output (same exit codes)";

/// The whole usage text for a table: heading with the application version, one
/// or more lines per command, the global option.
QString usageText(CommandTable table);

/// Names the table that printUsage shows. Called once at start, so that handlers
/// can print the usage without knowing the table. The table must outlive the run.
void setUsageTable(CommandTable table);

/// Names the command line that is being run, so that a handler need not know it to have its
/// mistakes named: the row, which must outlive the run, and the words typed, without those
/// that the dispatcher takes out itself.
void setTypedLine(const Command& command, const QStringList& typed);

/// Ends a command line that is not as it should be and returns kExitUsage. Prints the usage
/// text on standard output, in JSON mode too; a terminal sees the command's own lines
/// instead, and on standard error what is wrong with the line that was typed.
int printUsage();

/// Prints the command's usage lines on standard output; the exit code of the command line
/// that asked for them: kExitSuccess at a terminal, else kExitUsage.
int printHelp(const QString& lines);

}  // namespace quorvelle
