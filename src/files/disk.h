#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <system_error>
#include <vector>

/// What differs between platforms about files, and how all code of the engine and of the
/// sync touches them. Paths are native ones of any length.

namespace files {

/// What stands at a path itself; nothing is followed.
enum class EntryKind {
    kNothing,
    kFile,
    kDirectory,
    kOther,  ///< a symbolic link, a junction (Windows), a device
};

/// Whether a rename waits for somebody else's use of the file to end. Only Windows knows
/// such use; there it waits for 2 s at most, as virus scanners look at new files.
enum class WhenInUse { kWait, kFail };

/// The path as streams and calls of the platform take it at any length. For opening only:
/// the text of it is not fit to be shown.
std::filesystem::path openable(const std::filesystem::path& path);

EntryKind entryKind(const std::filesystem::path& path);

inline bool isRealDirectory(const std::filesystem::path& path) {
    return entryKind(path) == EntryKind::kDirectory;
}

/// The directory that a link at the path leads to, by its own path; the path itself where no
/// link stands, or one that leads to no directory.
std::filesystem::path behindLink(const std::filesystem::path& path);

/// Whether a file system, or a part of one, is mounted here: such a directory cannot be
/// renamed. The root of a drive counts.
bool isMountPoint(const std::filesystem::path& directory);

/// A file that stands here itself and is under no other name anywhere: writing into it
/// changes nothing else.
bool isUnsharedFile(const std::filesystem::path& path);

/// Bytes of the file at the path, or of the one that a link there leads to; nothing when
/// there is no regular file.
std::optional<std::uint64_t> fileSize(const std::filesystem::path& path);

/// Bytes that this user may still write to the volume that a directory lies on; nothing when the
/// directory is missing or the system does not tell.
std::optional<std::uint64_t> freeSpace(const std::filesystem::path& directory);

/// What a directory holds, in no particular order; empty when it cannot be read. Asked with
/// openable(directory), Windows knows every entry by the name it has there, "nul" and names
/// with a dot or blank at their end among them.
std::vector<std::filesystem::path> entriesOf(const std::filesystem::path& directory);

/// The same; `error` tells whether it could be read to its end.
std::vector<std::filesystem::path> entriesOf(const std::filesystem::path& directory,
                                             std::error_code& error);

/// Whether a directory holds nothing; false when it cannot be read.
inline bool isEmptyDirectory(const std::filesystem::path& directory) {
    std::error_code error;
    return entriesOf(directory, error).empty() && !error;
}

/// Makes a directory whose parent exists. False when it stands already or is refused.
bool makeDirectory(const std::filesystem::path& path);

/// Makes a directory and its parents as far as they are missing. A failure shows when
/// the directory is used.
void makeDirectories(const std::filesystem::path& path);

/// Renames a file, over an existing one, or a directory to a name that is free. Empty
/// after success.
std::error_code renameEntry(const std::filesystem::path& from, const std::filesystem::path& to,
                            WhenInUse inUse = WhenInUse::kWait);

/// Removes an entry with all it holds, read-only files and directories without write
/// permission included. Links and junctions go, what they lead to stays; on POSIX a tree
/// stays whole while something is mounted in it. True when nothing stands at the path
/// afterwards.
bool removeTree(const std::filesystem::path& path);

/// Returns when the file's bytes are on the disk; false when that failed. Windows waits up to
/// 2 s for others who hold the file.
bool flushToDisk(const std::filesystem::path& file);

/// Returns when the names in a folder, new, changed and removed, are on the disk; false
/// when that failed. Where no such flush is to be had (a folder that may not be read, file
/// systems that know none, Windows, which writes renames through) it counts as done.
bool flushFolder(const std::filesystem::path& folder);

/// The same for a directory with all that lies below it, bytes and names. Many files are
/// flushed by one call for the whole file system, where that tells of failures.
bool flushTree(const std::filesystem::path& directory);

}  // namespace files
