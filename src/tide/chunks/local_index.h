#pragma once

#include <filesystem>

#include "tide/chunks/chunk.h"

namespace tide {

/// Adds the chunks of every regular file below a directory to `index`; a chunk that it
/// holds already keeps its place, and within the directory the first file of the walk
/// wins. Links are not followed. Does nothing when there is no such directory; a file
/// that cannot be read adds nothing.
///
/// Files are cut on up to `threads` threads, the caller's among them, and 0 means as
/// many as the machine runs at once; the result does not depend on it. Each takes about
/// 1 MiB. Returns when all have ended.
void buildLocalIndex(const std::filesystem::path& directory, LocalIndex& index,
                     unsigned threads = 0);

}  // namespace tide
