#pragma once

#include <QString>

/// Renames and removals of whole trees. Symbolic links and junctions are entries of their
/// own here: none is ever followed.

namespace quorvelle {

/// True when anything stands at the path, a dangling link included.
bool entryExists(const QString& path);

/// True when a directory, or a link to one, stands at the path.
bool directoryExists(const QString& path);

/// Renames a file or a directory. False when the platform refuses, for instance
/// because files in it are in use or something else stands at `to`. Windows waits for
/// up to 2 s for such use to end.
bool renameEntry(const QString& from, const QString& to);

/// Removes a file or a directory with all it holds, read-only files and directories without
/// write permission included. True when nothing stands at the path afterwards.
bool removeTree(const QString& path);

}  // namespace quorvelle
