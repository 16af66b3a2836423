#pragma once

#include <QString>

/// Builds that have had their day. One that cannot be removed, for instance because another
/// user's files are in it, must not stop the updates that come after it: it goes aside in
/// the state folder as ".old-1", ".old-2", ... and is never an install again.

namespace quorvelle {

/// Removes a state entry of `dir` with all it holds, or moves it aside. True when its name
/// is free afterwards.
bool discardTree(const QString& dir, const char* suffix);

/// Removes what earlier syncs had to move aside, as far as that is possible now, and what
/// is left of markers that they were writing when they were killed.
void clearLeftovers(const QString& dir);

}  // namespace quorvelle
