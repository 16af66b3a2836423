#pragma once

#include <QString>

namespace quorvelle {

/// Whether a manifest path may be joined with a target directory: relative, at most
/// 1024 characters, "/" between its parts, no part empty, "." or "..".
bool isSafeRelativePath(const QString& path);

/// Whether the platform, too, would put such a path below the directory it is joined
/// with, under exactly this name. POSIX refuses only the NUL character; Windows also
/// drive letters, streams, device names, and trailing dots and blanks.
bool staysInside(const QString& safePath);

}  // namespace quorvelle
