#include "files/disk.h"

#include <cwchar>

#include "files/win32.h"
#include "files/windows_entry.h"

namespace files {

namespace {

namespace fs = std::filesystem;

/// What Windows takes at most, in characters.
constexpr DWORD kLongestPath = 32768;

/// The file or directory opened without keeping anybody from it.
win32::Handle opened(const fs::path& path, DWORD access, DWORD flags = 0,
                     win32::Patience patience = win32::Patience::kNone) {
    const fs::path name = openable(path);
    HANDLE handle = INVALID_HANDLE_VALUE;
    win32::patiently(
        [&] {
            handle = CreateFileW(name.c_str(), access, win32::kShareAll, nullptr, OPEN_EXISTING,
                                 FILE_ATTRIBUTE_NORMAL | flags, nullptr);
            return handle != INVALID_HANDLE_VALUE;
        },
        patience);
    return win32::Handle(handle);
}

bool removeOne(const std::wstring& path, bool directory) {
    const DWORD error = win32::patiently([&] {
        return (directory ? RemoveDirectoryW(path.c_str()) : DeleteFileW(path.c_str())) != 0;
    });
    return error == 0 || error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND;
}

}  // namespace

fs::path openable(const fs::path& path) {
    return win32::extendedPath(path.native());
}

EntryKind entryKind(const fs::path& path) {
    const DWORD attributes = GetFileAttributesW(openable(path).c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES) {
        const DWORD error = GetLastError();
        return error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND ? EntryKind::kNothing
                                                                              : EntryKind::kOther;
    }
    if ((attributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0) {
        return windowsEntryKind(attributes, 0);
    }
    const win32::Handle entry = opened(path, FILE_READ_ATTRIBUTES,
                                       FILE_FLAG_OPEN_REPARSE_POINT | FILE_FLAG_BACKUP_SEMANTICS);
    return win32::kindOf(entry.get(), attributes);
}

fs::path behindLink(const fs::path& path) {
    if (entryKind(path) != EntryKind::kOther || !win32::isDirectory(openable(path))) {
        return path;
    }
    const win32::Handle target = opened(path, 0, FILE_FLAG_BACKUP_SEMANTICS);
    std::wstring name(kLongestPath, L'\0');
    const DWORD length =
        target.isOpen() ? GetFinalPathNameByHandleW(target.get(), name.data(), kLongestPath, 0) : 0;
    // What is mounted without a drive letter has no such name.
    if (length == 0 || length >= kLongestPath) {
        return path;
    }
    name.resize(length);
    const std::wstring share = LR"(\\?\UNC\)";
    const std::wstring drive = LR"(\\?\)";
    return name.starts_with(share) ? fs::path(LR"(\\)" + name.substr(share.size()))
                                   : fs::path(name.substr(drive.size()));
}

bool isMountPoint(const fs::path& directory) {
    std::wstring path = openable(directory);
    if (!path.ends_with(L'\\')) {
        path += L'\\';
    }
    std::wstring volume(kLongestPath, L'\0');
    if (GetVolumePathNameW(path.c_str(), volume.data(), kLongestPath) == 0) {
        return false;
    }
    volume.resize(std::wcslen(volume.c_str()));
    return CompareStringOrdinal(path.c_str(), -1, volume.c_str(), -1, TRUE) == CSTR_EQUAL;
}

bool isUnsharedFile(const fs::path& path) {
    const auto found = opened(path, 0).information();
    return entryKind(path) == EntryKind::kFile && found && found->nNumberOfLinks == 1;
}

std::optional<std::uint64_t> fileSize(const fs::path& path) {
    const auto found = opened(path, 0).information();
    if (!found || (found->dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
        return std::nullopt;
    }
    return std::uint64_t{found->nFileSizeHigh} << 32 | found->nFileSizeLow;
}

std::optional<std::uint64_t> freeSpace(const fs::path& directory) {
    // The C++ library of MinGW takes a path in the form without a limit for a relative one.
    ULARGE_INTEGER available = {};
    return GetDiskFreeSpaceExW(openable(directory).c_str(), &available, nullptr, nullptr) != 0
               ? std::optional(std::uint64_t{available.QuadPart})
               : std::nullopt;
}

std::vector<fs::path> entriesOf(const fs::path& directory) {
    std::error_code ignored;
    return entriesOf(directory, ignored);
}

std::vector<fs::path> entriesOf(const fs::path& directory, std::error_code& error) {
    // A volume may hold nothing, not even ".", which is how the end of a search reads then.
    const auto asError = [](DWORD code) {
        const bool isEnd = code == ERROR_NO_MORE_FILES || code == ERROR_FILE_NOT_FOUND;
        return isEnd ? std::error_code()
                     : std::error_code(static_cast<int>(code), std::system_category());
    };
    std::vector<fs::path> entries;
    WIN32_FIND_DATAW found = {};
    const HANDLE search = FindFirstFileExW(openable(directory / L"*").c_str(), FindExInfoBasic,
                                           &found, FindExSearchNameMatch, nullptr, 0);
    if (search == INVALID_HANDLE_VALUE) {
        error = asError(GetLastError());
        return entries;
    }
    do {
        const std::wstring name = found.cFileName;
        if (name != L"." && name != L"..") {
            entries.push_back(directory / name);
        }
    } while (FindNextFileW(search, &found) != 0);
    error = asError(GetLastError());
    FindClose(search);
    return entries;
}

bool makeDirectory(const fs::path& path) {
    return CreateDirectoryW(openable(path).c_str(), nullptr) != 0;
}

void makeDirectories(const fs::path& path) {
    if (!makeDirectory(path) && GetLastError() == ERROR_PATH_NOT_FOUND && path.has_parent_path() &&
        path.parent_path() != path) {
        makeDirectories(path.parent_path());
        makeDirectory(path);
    }
}

std::error_code renameEntry(const fs::path& from, const fs::path& to, WhenInUse inUse) {
    const DWORD error = win32::moveEntry(
        openable(from), openable(to),
        inUse == WhenInUse::kWait ? win32::Patience::kFull : win32::Patience::kNone);
    return {static_cast<int>(error), std::system_category()};
}

bool removeTree(const fs::path& path) {
    const std::wstring name = openable(path);
    const DWORD attributes = GetFileAttributesW(name.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES) {
        return entryKind(path) == EntryKind::kNothing;
    }
    if (isRealDirectory(path)) {
        // Below the extended path every name is itself; elsewhere "nul" is a device, and
        // dots and blanks at an end do not count.
        for (const fs::path& entry : entriesOf(name)) {
            if (!removeTree(entry)) {
                return false;
            }
        }
    }
    win32::clearReadOnly(name);
    return removeOne(name, (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0);
}

bool flushToDisk(const fs::path& path) {
    const win32::Handle file =
        opened(path, GENERIC_WRITE, FILE_FLAG_OPEN_REPARSE_POINT, win32::Patience::kFull);
    return file.isOpen() && FlushFileBuffers(file.get()) != 0;
}

bool flushFolder(const fs::path& folder) {
    const win32::Handle names = opened(folder, GENERIC_WRITE, FILE_FLAG_BACKUP_SEMANTICS);
    if (names.isOpen()) {
        FlushFileBuffers(names.get());
    }
    return true;
}

bool flushTree(const fs::path& directory) {
    std::error_code error;
    const std::vector<fs::path> entries = entriesOf(openable(directory), error);
    if (error) {
        return false;
    }
    for (const fs::path& entry : entries) {
        const EntryKind kind = entryKind(entry);
        if ((kind == EntryKind::kDirectory && !flushTree(entry)) ||
            (kind == EntryKind::kFile && !flushToDisk(entry))) {
            return false;
        }
    }
    return flushFolder(directory);
}

}  // namespace files
