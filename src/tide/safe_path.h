#pragma once

#include <string>
#include <string_view>

namespace tide {

/// Whether a manifest's path (UTF-8) may be joined with a target directory: relative, at
/// most 1024 UTF-16 code units, "/" between its parts, no part empty, "." or "..", no
/// backslash; and the platform puts it below that directory, under exactly this name.
bool isSafePath(std::string_view path);

/// The platform's share of isSafePath: POSIX refuses only the NUL character; Windows
/// also what isWindowsSafePath refuses.
bool staysInside(std::string_view path);

/// The rule for Windows, on every platform: valid UTF-8 whose parts hold no reserved
/// character, do not end in a dot or blank and name no device ("NUL", "com1.txt").
bool isWindowsSafePath(std::string_view path);

/// A path as the platform's file systems compare it: as it is on POSIX, without case on
/// Windows.
std::string comparablePath(std::string_view path);

}  // namespace tide
