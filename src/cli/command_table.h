#pragma once

#include "console/command.h"

namespace quorvelle {

/// Every command of the program in the order in which the words are compared; the
/// first row that matches wins.
CommandTable commandTable();

}  // namespace quorvelle
