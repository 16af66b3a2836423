#include "files/process_lock.h"

#include <string>
#include <system_error>

#include "files/disk.h"
#include "files/win32.h"

namespace quorvelle {

struct ProcessLock::Holding : files::win32::Handle {
    using Handle::Handle;
};

namespace {

/// How long a waiting process sleeps between its looks at the lock, in milliseconds.
constexpr DWORD kPoll = 10;

/// A link in the file's place is never followed: it is itself what is locked.
constexpr DWORD kLockFlags = FILE_ATTRIBUTE_NORMAL | FILE_FLAG_OPEN_REPARSE_POINT;

/// Opens the file so that nobody else can open it for writing, and so that it goes with
/// the handle, also when the process is killed.
HANDLE openAlone(const std::wstring& path) {
    return CreateFileW(path.c_str(), GENERIC_WRITE | DELETE, FILE_SHARE_READ | FILE_SHARE_DELETE,
                       nullptr, OPEN_ALWAYS, kLockFlags | FILE_FLAG_DELETE_ON_CLOSE, nullptr);
}

/// Opens another user's file, which may only be read, so that nobody else can open it in
/// either way; it stays behind.
HANDLE openForeign(const std::wstring& path) {
    return CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_DELETE, nullptr, OPEN_EXISTING,
                       kLockFlags, nullptr);
}

/// The file opened, or the error's code. A file that its last holder gave up a moment ago
/// refuses to be opened until it is gone; that is no sign of a holder.
DWORD tryOpen(const std::wstring& path, HANDLE& handle) {
    const DWORD error = files::win32::patiently([&] {
        handle = openAlone(path);
        return handle != INVALID_HANDLE_VALUE || GetLastError() == ERROR_SHARING_VIOLATION;
    });
    if (error == ERROR_ACCESS_DENIED) {
        handle = openForeign(path);
        return handle == INVALID_HANDLE_VALUE ? GetLastError() : 0;
    }
    return handle == INVALID_HANDLE_VALUE && error == 0 ? ERROR_SHARING_VIOLATION : error;
}

}  // namespace

ProcessLock::ProcessLock() = default;
ProcessLock::~ProcessLock() = default;

ProcessLock::Outcome ProcessLock::take(const QString& path, bool wait) {
    release();
    const std::wstring name = files::win32::extendedPath(path.toStdWString());
    HANDLE handle = INVALID_HANDLE_VALUE;
    DWORD error = tryOpen(name, handle);
    while (wait && error == ERROR_SHARING_VIOLATION) {
        Sleep(kPoll);
        error = tryOpen(name, handle);
    }
    if (error == 0) {
        holding = std::make_unique<Holding>(handle);
        return Outcome::kHeld;
    }
    if (error == ERROR_SHARING_VIOLATION) {
        return Outcome::kBusy;
    }
    if (files::entryKind(name) == files::EntryKind::kNothing) {
        return Outcome::kNoPlace;
    }
    const std::string reason = std::system_category().message(static_cast<int>(error));
    refusal = QString::fromLocal8Bit(reason.c_str()).trimmed();
    return Outcome::kRefused;
}

void ProcessLock::release() {
    holding.reset();
}

}  // namespace quorvelle
