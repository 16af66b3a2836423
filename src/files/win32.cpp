#include "files/win32.h"

#include <numeric>

#include "files/windows_entry.h"

namespace files::win32 {

namespace {

static_assert(std::accumulate(kWaits.begin(), kWaits.end(), DWORD{0}) == 2000);

constexpr DWORD kUnmarked = FILE_ATTRIBUTE_NORMAL;

bool passes(DWORD error) {
    // What was removed from a directory can stay in it until its last opener closes it.
    return error == ERROR_SHARING_VIOLATION || error == ERROR_LOCK_VIOLATION ||
           error == ERROR_ACCESS_DENIED || error == ERROR_DELETE_PENDING ||
           error == ERROR_DIR_NOT_EMPTY;
}

}  // namespace

std::optional<BY_HANDLE_FILE_INFORMATION> Handle::information() const {
    BY_HANDLE_FILE_INFORMATION found = {};
    return isOpen() && GetFileInformationByHandle(handle, &found) != 0 ? std::optional(found)
                                                                       : std::nullopt;
}

std::wstring extendedPath(const std::wstring& path) {
    if (path.starts_with(LR"(\\?\)") || path.starts_with(LR"(\\.\)")) {
        return path;
    }
    const DWORD needed = GetFullPathNameW(path.c_str(), 0, nullptr, nullptr);
    std::wstring full(needed, L'\0');
    full.resize(GetFullPathNameW(path.c_str(), needed, full.data(), nullptr));
    if (full.empty() || full.starts_with(LR"(\\.\)")) {
        return full.empty() ? path : full;
    }
    return full.starts_with(LR"(\\)") ? LR"(\\?\UNC)" + full.substr(1) : LR"(\\?\)" + full;
}

bool isDirectory(const std::wstring& path) {
    const DWORD attributes = GetFileAttributesW(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

EntryKind kindOf(HANDLE entry, DWORD attributes) {
    FILE_ATTRIBUTE_TAG_INFO found = {};
    if ((attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0) {
        GetFileInformationByHandleEx(entry, FileAttributeTagInfo, &found, sizeof found);
    }
    return windowsEntryKind(attributes, found.ReparseTag);
}

DWORD patiently(const std::function<bool()>& attempt, Patience patience) {
    std::size_t waits = 0;
    for (;;) {
        if (attempt()) {
            return 0;
        }
        const DWORD error = GetLastError();
        if (patience == Patience::kNone || !passes(error) || waits == kWaits.size()) {
            return error;
        }
        Sleep(kWaits[waits++]);
    }
}

void clearReadOnly(const std::wstring& path) {
    const DWORD attributes = GetFileAttributesW(path.c_str());
    if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_READONLY) != 0) {
        const DWORD left = attributes & ~DWORD{FILE_ATTRIBUTE_READONLY};
        SetFileAttributesW(path.c_str(), left != 0 ? left : kUnmarked);
    }
}

DWORD moveEntry(const std::wstring& from, const std::wstring& to, Patience patience) {
    // Asked to replace, the system would put a directory in the place of a file as well.
    const bool replace = !isDirectory(from);
    if (replace && !isDirectory(to)) {
        clearReadOnly(to);
    }
    const DWORD flags = MOVEFILE_WRITE_THROUGH | (replace ? MOVEFILE_REPLACE_EXISTING : 0U);
    // A directory is never replaced, so waiting for it would be in vain.
    return patiently([&] { return MoveFileExW(from.c_str(), to.c_str(), flags) != 0; },
                     isDirectory(to) ? Patience::kNone : patience);
}

std::wstring systemProgram(const std::wstring& relative) {
    std::wstring folder(GetSystemDirectoryW(nullptr, 0), L'\0');
    folder.resize(GetSystemDirectoryW(folder.data(), static_cast<UINT>(folder.size())));
    return folder + L'\\' + relative;
}

}  // namespace files::win32
