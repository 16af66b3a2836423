#pragma once

#include <QString>
#include <functional>

#include "sync/markers.h"

/// The swap that puts a staged build in place of the installed one by two renames,
/// and what a later run makes of a swap that was cut short, by the end of the process or
/// of the power.
///
/// The swap record (".swap", see markers.h) stands while a swap is under way, so that the
/// next process can tell "the staging directory is gone because it is installed now" from
/// "it is gone", and what the swap moved to ".old" from what an earlier one left there.
///
/// A directory that nothing vouches for (no marker, no record, no state of an earlier
/// release) holds what somebody else put there. The swap keeps it in the state folder as
/// ".replaced"; the program never removes or overwrites that.

namespace quorvelle {

enum class SwapResult {
    kSwapped,      ///< the staged build is in place and recorded as installed
    kInUse,        ///< the install directory could not be moved away; nothing changed
    kNotMovable,   ///< the swap could not be made; the install directory is as it was
    kWrittenInto,  ///< the last look said no; nothing changed, and nothing waits
    kNotFlushed,   ///< staging could not be brought to the disk; nothing changed
    kNotRecorded,  ///< the staged build is in place, but the installed marker is missing
};

struct SwapOutcome {
    SwapResult result = SwapResult::kNotMovable;
    /// Where the content of a directory that nothing vouched for lies now; empty when
    /// there was none.
    QString kept = {};
};

/// Whether a swap keeps what the install directory holds now: a build that shared files with it
/// would change it later.
bool keepsContent(const QString& dir);

/// Writes the staged marker where staging stands, puts the staging directory of `dir` in place and
/// replaces that marker by the installed one. The caller holds the sync lock. Where the staged
/// build is not in place afterwards, staging stands as it was.
///
/// `mayGoOn`, which may be empty, is asked directly before the first rename whether staging
/// still is what it has to be.
SwapOutcome swapInStaged(const QString& dir, const StagedMarker& staged,
                         const std::function<bool()>& mayGoOn = {});

/// Takes the staged marker away, on the disk as well, before staging changes: it must never
/// speak of something else. False when it may still stand.
bool withdrawStaged(const QString& dir);

/// Brings a swap that was cut short to one side: what it moved away comes back where the
/// install directory is missing, and a staged build that was already moved into place is
/// recorded as installed. Does nothing otherwise, but for another try to remove an ".old"
/// that could not be removed. Returns SwapOutcome::kept of a swap that it completed.
QString recoverSwap(const QString& dir);

}  // namespace quorvelle
