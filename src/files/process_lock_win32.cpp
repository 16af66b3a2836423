#include "files/process_lock.h"
#include "files/win32.h"

namespace quorvelle {

struct ProcessLock::Holding {
    HANDLE handle;

    explicit Holding(HANDLE held) : handle(held) {}
    ~Holding() { CloseHandle(handle); }
    Holding(const Holding&) = delete;
    Holding& operator=(const Holding&) = delete;
};

namespace {

/// How long a waiting process sleeps between its looks at the lock, in milliseconds.
constexpr DWORD kPoll = 10;

/// Opens the file so that nobody else can open it for writing, and so that it goes with
/// the handle, also when the process is killed.
HANDLE openAlone(const std::wstring& path) {
    return CreateFileW(path.c_str(), GENERIC_WRITE | DELETE, FILE_SHARE_READ | FILE_SHARE_DELETE,
                       nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL | FILE_FLAG_DELETE_ON_CLOSE,
                       nullptr);
}

}  // namespace

ProcessLock::ProcessLock() = default;
ProcessLock::~ProcessLock() = default;

ProcessLock::Outcome ProcessLock::take(const QString& path, bool wait) {
    release();
    const std::wstring name = files::win32::extendedPath(path.toStdWString());
    HANDLE handle = INVALID_HANDLE_VALUE;
    DWORD error = 0;
    do {
        if (error != 0) {
            Sleep(kPoll);
        }
        // A file that its last holder gave up a moment ago refuses to be opened until it
        // is gone; that is no sign of a holder.
        error = files::win32::patiently([&] {
            handle = openAlone(name);
            return handle != INVALID_HANDLE_VALUE || GetLastError() == ERROR_SHARING_VIOLATION;
        });
        if (handle == INVALID_HANDLE_VALUE && error == 0) {
            error = ERROR_SHARING_VIOLATION;
        }
    } while (wait && error == ERROR_SHARING_VIOLATION);
    if (error == 0) {
        holding = std::make_unique<Holding>(handle);
        return Outcome::kHeld;
    }
    return error == ERROR_SHARING_VIOLATION ? Outcome::kBusy : Outcome::kUnavailable;
}

void ProcessLock::release() {
    holding.reset();
}

}  // namespace quorvelle
