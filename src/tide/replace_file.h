#pragma once

#include <filesystem>
#include <functional>
#include <string>

#include "tide/sleep.h"

namespace tide {

/// Called while a file in use keeps its place: its path (UTF-8), the number of the
/// attempt that comes next, from 1, and the most there will be.
using InUseCallback = std::function<void(const std::string& path, int attempt, int maximum)>;

/// Renames `from` over `to`. A refusal is read as "in use by a running program": up to
/// `attempts` times `inUse` (may be empty) is called, a second passes, and it is tried
/// again. On failure `err`, unless null, is assigned "'<to>' is in use - could not
/// replace it (<reason>)", and both files stand as they were.
bool replaceFile(const std::filesystem::path& from, const std::filesystem::path& to, int attempts,
                 const InUseCallback& inUse, const Sleep& sleep, std::string* err);

}  // namespace tide
