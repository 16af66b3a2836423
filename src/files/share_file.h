#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>

/// Files that become part of another directory without their bytes being written again, and
/// how to tell that nobody writes into them. Paths are native ones of any length.

namespace files {

/// What changes when somebody writes into a file, or puts another in its place.
struct FileStamp {
    /// In bytes.
    std::uint64_t size = 0;
    /// The time of the last change of the bytes, in the finest unit of the platform
    /// (nanoseconds on POSIX, 100 ns on Windows).
    std::int64_t changed = 0;
    /// The file's number in its file system.
    std::uint64_t number = 0;

    bool operator==(const FileStamp&) const = default;
};

/// The stamp of a regular file; nothing where anything else stands, a link among them.
std::optional<FileStamp> stampOf(const std::filesystem::path& path);

/// The same, when at this moment nobody has the file open or mapped for writing, under
/// whichever of its names; nothing where somebody has, where it cannot be known, and where
/// the last change is so recent that the next might leave the same time. On Windows a mapping
/// whose handle was closed goes unseen.
std::optional<FileStamp> stampOfUnwritten(const std::filesystem::path& path);

/// Makes `name`, which must be free, a file of its own that begins with the blocks of
/// another: it costs neither space nor time, and what happens to one of them later does not
/// reach the other. False, with nothing left at `name`, where the file system cannot.
bool cloneFile(const std::filesystem::path& file, const std::filesystem::path& name);

/// Makes `name`, which must be free, a second name of a file: whoever writes into one writes
/// into both. False where the file system or the platform refuses.
bool linkFile(const std::filesystem::path& file, const std::filesystem::path& name);

}  // namespace files
