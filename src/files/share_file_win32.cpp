#include "files/share_file.h"

#include <algorithm>

#include "files/win32.h"

// Stands on what that one brings.
#include <winioctl.h>

namespace files {

namespace fs = std::filesystem;

namespace {

constexpr DWORD kShareForReading = FILE_SHARE_READ | FILE_SHARE_DELETE;

/// Times of FAT step by 2 s, those of other file systems by less; in units of 100 ns.
constexpr std::int64_t kClockStep = 2 * 10'000'000;

/// The most that one call clones; whole clusters, whatever their size.
constexpr std::int64_t kCloneStep = std::int64_t{1} << 30;

/// What FSCTL_DUPLICATE_EXTENTS_TO_FILE takes, and the number of that call: not every set of
/// headers knows them.
struct DuplicateExtents {
    HANDLE file;
    LARGE_INTEGER from;
    LARGE_INTEGER to;
    LARGE_INTEGER count;
};
constexpr DWORD kDuplicateExtents =
    CTL_CODE(FILE_DEVICE_FILE_SYSTEM, 209, METHOD_BUFFERED, FILE_WRITE_DATA);
constexpr DWORD kBlockCloning = 0x08000000;

win32::Handle openShared(const fs::path& path, DWORD access, DWORD share, DWORD creation) {
    return win32::Handle(
        CreateFileW(win32::extendedPath(path.native()).c_str(), access, share, nullptr, creation,
                    FILE_ATTRIBUTE_NORMAL | FILE_FLAG_OPEN_REPARSE_POINT, nullptr));
}

std::int64_t ticks(const FILETIME& time) {
    return std::int64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime;
}

std::optional<FileStamp> stampFrom(const win32::Handle& file) {
    const auto about = file.information();
    if (!about || win32::kindOf(file.get(), about->dwFileAttributes) != EntryKind::kFile) {
        return std::nullopt;
    }
    return FileStamp{std::uint64_t{about->nFileSizeHigh} << 32 | about->nFileSizeLow,
                     ticks(about->ftLastWriteTime),
                     std::uint64_t{about->nFileIndexHigh} << 32 | about->nFileIndexLow};
}

bool volumeClones(const win32::Handle& file) {
    DWORD flags = 0;
    return GetVolumeInformationByHandleW(file.get(), nullptr, 0, nullptr, nullptr, &flags, nullptr,
                                         0) != 0 &&
           (flags & kBlockCloning) != 0;
}

/// Bytes of a cluster of the volume that a file lies on; nothing when the system does not tell.
std::optional<std::int64_t> clusterSize(const fs::path& file) {
    const std::wstring path = win32::extendedPath(file.native());
    std::wstring volume(path.size() + 2, L'\0');
    DWORD sectors = 0;
    DWORD bytes = 0;
    DWORD freeClusters = 0;
    DWORD clusters = 0;
    if (GetVolumePathNameW(path.c_str(), volume.data(), static_cast<DWORD>(volume.size())) == 0 ||
        GetDiskFreeSpaceW(volume.c_str(), &sectors, &bytes, &freeClusters, &clusters) == 0) {
        return std::nullopt;
    }
    return std::int64_t{sectors} * bytes;
}

bool cloneAll(const win32::Handle& from, const win32::Handle& to, std::int64_t size,
              std::int64_t cluster) {
    // Only whole clusters can be cloned, the last one included.
    const std::int64_t last = (size + cluster - 1) / cluster * cluster;
    LARGE_INTEGER end = {};
    end.QuadPart = size;
    if (SetFilePointerEx(to.get(), end, nullptr, FILE_BEGIN) == 0 || SetEndOfFile(to.get()) == 0) {
        return false;
    }
    for (std::int64_t at = 0; at < last; at += kCloneStep) {
        DuplicateExtents stretch = {from.get(), {}, {}, {}};
        stretch.from.QuadPart = at;
        stretch.to.QuadPart = at;
        stretch.count.QuadPart = std::min(kCloneStep, last - at);
        DWORD returned = 0;
        if (DeviceIoControl(to.get(), kDuplicateExtents, &stretch, sizeof stretch, nullptr, 0,
                            &returned, nullptr) == 0) {
            return false;
        }
    }
    return true;
}

}  // namespace

std::optional<FileStamp> stampOf(const fs::path& path) {
    return stampFrom(openShared(path, FILE_READ_ATTRIBUTES, win32::kShareAll, OPEN_EXISTING));
}

std::optional<FileStamp> stampOfUnwritten(const fs::path& path) {
    // Whoever has the file open for writing makes this fail.
    const win32::Handle file = openShared(path, GENERIC_READ, kShareForReading, OPEN_EXISTING);
    const std::optional<FileStamp> stamp = stampFrom(file);
    FILETIME now = {};
    GetSystemTimeAsFileTime(&now);
    return stamp && ticks(now) - stamp->changed >= kClockStep ? stamp : std::nullopt;
}

bool cloneFile(const fs::path& file, const fs::path& name) {
    const win32::Handle from = openShared(file, GENERIC_READ, win32::kShareAll, OPEN_EXISTING);
    const std::optional<FileStamp> stamp = stampFrom(from);
    if (!stamp || !volumeClones(from)) {
        return false;
    }
    const std::int64_t cluster = clusterSize(file).value_or(0);
    if (cluster == 0) {
        return false;
    }
    bool done = false;
    {
        const win32::Handle to =
            openShared(name, GENERIC_READ | GENERIC_WRITE | DELETE, FILE_SHARE_DELETE, CREATE_NEW);
        if (!to.isOpen()) {
            return false;
        }
        done = cloneAll(from, to, static_cast<std::int64_t>(stamp->size), cluster);
    }
    if (!done) {
        DeleteFileW(win32::extendedPath(name.native()).c_str());
    }
    return done;
}

bool linkFile(const fs::path& file, const fs::path& name) {
    return CreateHardLinkW(win32::extendedPath(name.native()).c_str(),
                           win32::extendedPath(file.native()).c_str(), nullptr) != 0;
}

}  // namespace files
