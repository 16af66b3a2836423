#pragma once

#include <unistd.h>

#include <vector>

#include "support/process_runner.h"

namespace quorvelle::testing {

/// A run of which some streams, named by their descriptors, are a terminal. What is written
/// to that comes back as standard error, each line with a plain line end.
Outcome runAtTerminal(const Sandbox& sandbox, const QStringList& words,
                      const std::vector<int>& streams = {STDERR_FILENO});

}  // namespace quorvelle::testing
