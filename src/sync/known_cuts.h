#pragma once

#include <QString>
#include <string>

#include "tide/chunks/local_index.h"

/// The remembered chunk lists of the install directories, one file each below "quorvelle" in
/// the user's cache folder. They spare reading what has not changed; one that is missing,
/// damaged or out of date changes nothing else.

namespace quorvelle {

/// The list of an install directory; empty when none can be had.
tide::KnownCuts loadCuts(const QString& dir);

/// Puts a list (tide::encodeCuts) in the place of the one before, and removes the lists of
/// directories that are gone. Failures have no effect but on the time of the next update.
void saveCuts(const QString& dir, const std::string& bytes);

}  // namespace quorvelle
