#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#include "files/descriptor_posix.h"
#include "files/raw_file.h"

namespace files {

namespace {

constexpr mode_t kUnmasked = 0666;

int flagsFor(RawFile::For purpose) {
    switch (purpose) {
        case RawFile::For::kReading:
            return O_RDONLY;
        case RawFile::For::kWriting:
            return O_RDWR;
        default:
            return O_RDWR | O_CREAT | O_EXCL;
    }
}

int descriptorOf(std::intptr_t handle) {
    return static_cast<int>(handle);
}

}  // namespace

RawFile::RawFile(const std::filesystem::path& path, For purpose)
    : handle(::open(path.c_str(), flagsFor(purpose) | O_CLOEXEC, kUnmasked)) {}

std::optional<std::size_t> RawFile::read(std::uint64_t offset, std::span<char> space) {
    std::size_t done = 0;
    while (done < space.size()) {
        const ssize_t size = ::pread(descriptorOf(handle), space.data() + done, space.size() - done,
                                     static_cast<off_t>(offset + done));
        if (size < 0 && errno != EINTR) {
            return std::nullopt;
        }
        if (size == 0) {
            break;
        }
        done += size > 0 ? static_cast<std::size_t>(size) : 0;
    }
    return done;
}

bool RawFile::write(std::uint64_t offset, std::string_view bytes) const {
    while (!bytes.empty()) {
        const ssize_t size =
            ::pwrite(descriptorOf(handle), bytes.data(), bytes.size(), static_cast<off_t>(offset));
        if (size == 0 || (size < 0 && errno != EINTR)) {
            return false;
        }
        const std::size_t written = size > 0 ? static_cast<std::size_t>(size) : 0;
        offset += written;
        bytes.remove_prefix(written);
    }
    return true;
}

void RawFile::beginFlush() const {
    posix::beginFlush(descriptorOf(handle));
}

bool RawFile::cutOff(std::uint64_t size) const {
    return ::ftruncate(descriptorOf(handle), static_cast<off_t>(size)) == 0;
}

bool RawFile::close() {
    const std::intptr_t held = std::exchange(handle, kNone);
    return held == kNone || ::close(descriptorOf(held)) == 0;
}

}  // namespace files
