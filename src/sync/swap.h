#pragma once

#include <QString>

/// The swap that puts a staged build in place of the installed one by two renames,
/// and what a later run makes of a swap that was cut short.
///
/// While a swap is under way the state entry ".swap" stands. A process that ends in
/// the middle leaves it behind, so that the next one can tell "the staging directory
/// is gone because it is installed now" from "it is gone".

namespace quorvelle {

enum class SwapResult {
    kSwapped,     ///< the staged build is in place, the previous one is removed
    kInUse,       ///< the install directory could not be moved away; nothing changed
    kNotMovable,  ///< staging could not be moved; the install directory is back
};

/// Puts the staging directory of `dir` in place. The caller holds the sync lock,
/// records the outcome and then calls endSwap().
SwapResult swapInStaged(const QString& dir);

/// Ends the swap's record, whatever its result.
void endSwap(const QString& dir);

/// Brings a swap that was cut short to one side: an install directory that is missing
/// while ".old" and a staged marker (or the record of a swap) stand comes back from
/// ".old"; a staged build that was already moved into place is recorded as installed. Does nothing
/// otherwise.
void recoverSwap(const QString& dir);

}  // namespace quorvelle
