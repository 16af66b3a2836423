#include <windows.h>

#include <system_error>

#include "tide/disk.h"

namespace tide {

namespace {

/// The attributes of what stands at the path itself; 0 when nothing does.
DWORD attributesOf(const std::filesystem::path& path) {
    const DWORD attributes = ::GetFileAttributesW(path.c_str());
    return attributes == INVALID_FILE_ATTRIBUTES ? 0 : attributes;
}

}  // namespace

bool isRealDirectory(const std::filesystem::path& path) {
    const DWORD attributes = attributesOf(path);
    return (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0 &&
           (attributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0;
}

bool isUnsharedFile(const std::filesystem::path& path) {
    const DWORD attributes = attributesOf(path);
    std::error_code error;
    return attributes != 0 &&
           (attributes & (FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_REPARSE_POINT)) == 0 &&
           std::filesystem::hard_link_count(path, error) == 1;
}

bool flushToDisk(const std::filesystem::path& file) {
    const HANDLE handle =
        ::CreateFileW(file.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                      OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (handle == INVALID_HANDLE_VALUE) {
        return false;
    }
    const bool flushed = ::FlushFileBuffers(handle) != 0;
    ::CloseHandle(handle);
    return flushed;
}

bool shareFile(const std::filesystem::path&, const std::filesystem::path&) {
    return false;
}

}  // namespace tide
