#pragma once

#include <string>
#include <string_view>

namespace files {

/// Whether a manifest's path (UTF-8) may be joined with a target directory: relative, at
/// most 1024 UTF-16 code units, "/" between its parts, no part empty, "." or "..", no
/// backslash; and the platform puts it below that directory, under exactly this name.
bool isSafeRelativePath(std::string_view path);

/// The platform's share of isSafeRelativePath: POSIX refuses only the NUL character; Windows
/// what isWindowsSafePath refuses, and bytes that are no UTF-8.
bool isPlatformSafePath(std::string_view path);

/// The rule for Windows, on every platform: no part holds a character that Windows
/// reserves (a drive letter's or stream's ":" among them), ends in a dot or blank, or
/// names a device ("NUL", "com1.txt").
bool isWindowsSafePath(std::string_view path);

/// Why no build can be installed in a directory, by its absolute path (UTF-8, "/" between the
/// parts) alone; empty where that says nothing against it, which is always so on POSIX.
std::string whyNoInstallDirectory(std::string_view path);

/// What that says on Windows, on every platform.
std::string whyNoWindowsInstallDirectory(std::string_view path);

/// A path as the platform's file systems compare it: as it is on POSIX, without case on
/// Windows.
std::string comparablePath(std::string_view path);

}  // namespace files
