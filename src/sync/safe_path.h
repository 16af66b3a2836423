#pragma once

#include <QString>

namespace quorvelle {

/// Whether a manifest path may be joined with a target directory: relative, at most
/// 1024 characters, "/" between its parts, no part empty, "." or "..".
bool isSafeRelativePath(const QString& path);

/// Whether the platform, too, would put such a path below the directory it is joined
/// with, under exactly this name. POSIX refuses only the NUL character; Windows also
/// what isWindowsSafePath refuses.
bool staysInside(const QString& safePath);

/// The rule for Windows, on every platform: no part holds a character that Windows
/// reserves (a drive letter's or stream's ":" among them), ends in a dot or blank, or
/// names a device ("NUL", "com1.txt").
bool isWindowsSafePath(const QString& safePath);

}  // namespace quorvelle
