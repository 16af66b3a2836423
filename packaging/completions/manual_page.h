#pragma once

#include <QString>

#include "console/command.h"

namespace quorvelle {

/// The manual page, section 1: what stands in `page`, with the table's commands in the place
/// of "@COMMANDS@", what their options are for in that of "@OPTIONS@", and "@VERSION@".
QString manualPage(QString page, CommandTable table, const QString& version);

}  // namespace quorvelle
