#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "tide/chunks/local_index.h"
#include "tide/manifest/manifest.h"

namespace tide {

/// The remembered chunk list of an install directory: bytes of a versioned format with a
/// checksum, see docs/formats.md. All of it is a hint: whoever takes bytes that it names
/// hashes them.

/// The list of an install directory (UTF-8) whose files now stand below `root` as the
/// manifest has them. A file that is not there is left out.
std::string encodeCuts(const std::string& installDirectory, const std::filesystem::path& root,
                       const std::vector<ManifestFile>& files);

/// Reads a list back. False, with `cuts` as it was, for anything but an undamaged list of
/// this very directory.
bool decodeCuts(const std::string& bytes, const std::string& installDirectory, KnownCuts& cuts);

/// The install directory of a list, from its beginning alone, which nothing vouches for;
/// empty for other files.
std::string directoryOfCuts(const std::string& bytes);

}  // namespace tide
