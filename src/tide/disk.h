#pragma once

#include <filesystem>

/// What std::filesystem leaves to the platform. Paths are native.

namespace tide {

/// A directory that stands here itself: no symbolic link and, on Windows, no junction.
bool isRealDirectory(const std::filesystem::path& path);

/// A file that stands here itself and is under no other name anywhere: writing into it
/// changes nothing else.
bool isUnsharedFile(const std::filesystem::path& path);

/// Returns when the file's bytes are on the disk; false when that failed.
bool flushToDisk(const std::filesystem::path& file);

/// Makes `name`, which must be free, a second name of an existing file, so that it costs
/// neither space nor time. False where the platform or the file system does not, or
/// where a name of a file in use would get in the way later (Windows): then the bytes
/// have to be copied.
bool shareFile(const std::filesystem::path& file, const std::filesystem::path& name);

}  // namespace tide
