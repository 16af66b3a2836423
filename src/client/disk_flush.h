#pragma once

class QSaveFile;

namespace quorvelle {

/// Flushes what was handed to the system for this open file to the disk itself. False
/// when the disk reports that bytes could not be stored; a file that knows no such
/// flush counts as done. On Windows always true: a save-file flushes there in its
/// commit, and hands out nothing to ask for it with.
bool flushToDisk(const QSaveFile& file);

}  // namespace quorvelle
