#include <algorithm>
#include <utility>

#include "files/disk.h"
#include "files/raw_file.h"
#include "files/win32.h"

namespace files {

namespace {

/// What one call is asked for at most, in bytes.
constexpr std::uint64_t kMaxPiece = std::uint64_t{1} << 30;

HANDLE handleOf(std::intptr_t handle) {
    return reinterpret_cast<HANDLE>(handle);
}

OVERLAPPED at(std::uint64_t offset) {
    OVERLAPPED place = {};
    place.Offset = static_cast<DWORD>(offset);
    place.OffsetHigh = static_cast<DWORD>(offset >> 32);
    return place;
}

DWORD piece(std::size_t size) {
    return static_cast<DWORD>(std::min<std::uint64_t>(size, kMaxPiece));
}

}  // namespace

RawFile::RawFile(const std::filesystem::path& path, For purpose) {
    const bool reads = purpose == For::kReading;
    const std::filesystem::path name = openable(path);
    const DWORD refused = win32::patiently(
        [&] {
            handle = reinterpret_cast<std::intptr_t>(CreateFileW(
                name.c_str(), reads ? GENERIC_READ : GENERIC_READ | GENERIC_WRITE, win32::kShareAll,
                nullptr, purpose == For::kWritingAnew ? CREATE_NEW : OPEN_EXISTING,
                reads ? FILE_FLAG_SEQUENTIAL_SCAN : FILE_ATTRIBUTE_NORMAL, nullptr));
            return isOpen();
        },
        reads ? win32::Patience::kNone : win32::Patience::kFull);
    heldByOthers = refused == ERROR_SHARING_VIOLATION;
}

std::optional<std::size_t> RawFile::read(std::uint64_t offset, std::span<char> space) {
    std::size_t done = 0;
    while (done < space.size()) {
        OVERLAPPED place = at(offset + done);
        DWORD size = 0;
        if (ReadFile(handleOf(handle), space.data() + done, piece(space.size() - done), &size,
                     &place) == 0 &&
            GetLastError() != ERROR_HANDLE_EOF) {
            heldByOthers = GetLastError() == ERROR_LOCK_VIOLATION;
            return std::nullopt;
        }
        if (size == 0) {
            break;
        }
        done += size;
    }
    return done;
}

bool RawFile::write(std::uint64_t offset, std::string_view bytes) const {
    while (!bytes.empty()) {
        OVERLAPPED place = at(offset);
        DWORD size = 0;
        if (WriteFile(handleOf(handle), bytes.data(), piece(bytes.size()), &size, &place) == 0 ||
            size == 0) {
            return false;
        }
        offset += size;
        bytes.remove_prefix(size);
    }
    return true;
}

void RawFile::beginFlush() const {
    // Windows begins by itself, soon enough.
}

bool RawFile::cutOff(std::uint64_t size) const {
    LARGE_INTEGER end = {};
    end.QuadPart = static_cast<LONGLONG>(size);
    return SetFilePointerEx(handleOf(handle), end, nullptr, FILE_BEGIN) != 0 &&
           SetEndOfFile(handleOf(handle)) != 0;
}

bool RawFile::close() {
    const std::intptr_t held = std::exchange(handle, kNone);
    return held == kNone || CloseHandle(handleOf(held)) != 0;
}

}  // namespace files
