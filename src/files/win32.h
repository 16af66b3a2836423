#pragma once

#include <windows.h>

#include <array>
#include <functional>
#include <optional>
#include <string>

#include "files/disk.h"

/// What Windows asks of everybody who touches files there: names of any length, and
/// patience with programs that hold a file for a moment.

namespace files::win32 {

/// Waits between the attempts of patiently(), in milliseconds; 2 s in all, which outlasts
/// a virus scanner looking at a new file.
inline constexpr std::array<DWORD, 8> kWaits{10, 20, 40, 80, 160, 320, 640, 730};

/// For handles that keep nobody else from anything.
inline constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

/// An open file or directory, closed when it goes; nothing where it could not be opened.
class Handle {
public:
    explicit Handle(HANDLE opened) : handle(opened) {}
    ~Handle() {
        if (isOpen()) {
            CloseHandle(handle);
        }
    }
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;

    bool isOpen() const { return handle != INVALID_HANDLE_VALUE; }
    HANDLE get() const { return handle; }

    /// Size, times, attributes and identity, as the system tells them.
    std::optional<BY_HANDLE_FILE_INFORMATION> information() const;

private:
    const HANDLE handle;
};

enum class Patience {
    kNone,  ///< one attempt
    kFull,  ///< tries again after each of kWaits
};

/// The path made absolute, in the form that Windows takes at any length ("\\?\C:\..."),
/// with "\" between its parts. For the calls that open, rename and remove; never shown.
std::wstring extendedPath(const std::wstring& path);

/// Calls `attempt`, which returns what a call of the system returns and leaves the reason
/// of a failure to GetLastError; again when somebody else has the file open. Returns 0,
/// or the code of the last failure.
DWORD patiently(const std::function<bool()>& attempt, Patience patience = Patience::kFull);

/// Whether a directory, or a link to one, stands at an extended path.
bool isDirectory(const std::wstring& path);

/// What an open entry is, by its attributes. It must have been opened itself, not what a link
/// there leads to.
EntryKind kindOf(HANDLE entry, DWORD attributes);

/// Lets the file be replaced or removed, should it be marked read-only. The path is an
/// extended one.
void clearReadOnly(const std::wstring& path);

/// Renames a file, over an existing one also when that is read-only, or a directory to a
/// free name. Returns 0 or the code of the failure. The paths are extended ones.
DWORD moveEntry(const std::wstring& from, const std::wstring& to,
                Patience patience = Patience::kFull);

/// The full path of a program of the system's, by its path below the system's folder
/// ("cmd.exe"). By its name alone one in the current directory would be started.
std::wstring systemProgram(const std::wstring& relative);

}  // namespace files::win32
