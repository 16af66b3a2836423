#pragma once

#include <QString>

/// Renames and removals of whole trees. Symbolic links and junctions are entries of their
/// own here: none is ever followed.

namespace quorvelle {

/// True when anything stands at the path, a dangling link included.
bool entryExists(const QString& path);

/// True when a directory, or a link to one, stands at the path.
bool directoryExists(const QString& path);

/// The directory that a link or junction at the path leads to; the path as given where none
/// stands, or one that leads to no directory.
QString behindLink(const QString& path);

/// Whether the directory is a mount point, which cannot be renamed.
bool isMountPoint(const QString& directory);

/// Makes the directories of a relative path, with "/" between its parts, below a directory
/// that stands. False where that one is gone or a link, or where anything but a directory
/// is in the way.
bool makeDirectoriesBelow(const QString& directory, const QString& relative);

/// How many files a directory holds at any depth; 0 where none stands.
qsizetype countFiles(const QString& directory);

/// True when a regular file or a directory itself stands at the path, not a link to one.
bool isPlainFile(const QString& path);
bool isPlainDirectory(const QString& path);

/// True when a directory stands at the path that can be read and holds nothing.
bool isEmptyDirectory(const QString& path);

/// Return when a folder's names, or a directory with all below it, are on the disk; see
/// files/disk.h. False when that failed.
bool flushFolder(const QString& path);
bool flushTree(const QString& path);

/// Renames a file or a directory. False when the platform refuses, for instance
/// because files in it are in use or something else stands at `to`. Windows waits for
/// up to 2 s for such use to end.
bool renameEntry(const QString& from, const QString& to);

/// Removes a file or a directory with all it holds, read-only files and directories without
/// write permission included. True when nothing stands at the path afterwards.
bool removeTree(const QString& path);

}  // namespace quorvelle
