#pragma once

#include <string>
#include <vector>

#include "support/process_runner.h"

namespace quorvelle::testing {

/// What befalls a run of the program at one of the calls by which it changes files or
/// prints lines.
struct Fault {
    /// Number of the call, from 1; 0 leaves the run alone.
    int call = 0;
    /// The error number that this one call fails with; 0 kills the process before it.
    int error = 0;
};

struct FaultyOutcome : Outcome {
    int calls = 0;  ///< counted up to the end; 0 for a process that was killed
    std::string failed = "none";

    bool wasKilled() const { return code == -9; }
};

/// Runs `quorvelle` with the fault; the sandbox is used as it stands.
FaultyOutcome runFaulty(Sandbox& sandbox, const QStringList& args, Fault fault);

/// The numbers of the calls to try of a run that makes `calls`: every one, or one in
/// `step`; fewer in a build whose checks make runs slow.
std::vector<int> faultPoints(int calls, int step = 1);

}  // namespace quorvelle::testing
