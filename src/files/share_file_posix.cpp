#include "files/share_file.h"

#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <ctime>

namespace files {

namespace fs = std::filesystem;

namespace {

constexpr std::int64_t kSecond = 1'000'000'000;
/// Kernels stamp with a clock that stands still for up to 10 ms.
constexpr std::int64_t kClockStep = 2 * 10'000'000;
/// Less what the process's umask takes away.
constexpr mode_t kNewFileMode = 0666;

std::int64_t nanoseconds(const timespec& time) {
    return time.tv_sec * kSecond + time.tv_nsec;
}

std::optional<FileStamp> stampFrom(const struct stat& about) {
    if (!S_ISREG(about.st_mode)) {
        return std::nullopt;
    }
    return FileStamp{static_cast<std::uint64_t>(about.st_size), nanoseconds(about.st_mtim),
                     about.st_ino};
}

/// An open file, closed at the end.
class Descriptor {
public:
    Descriptor(const fs::path& path, int flags)
        : number(::open(path.c_str(), flags | O_CLOEXEC | O_NOFOLLOW, kNewFileMode)) {}
    ~Descriptor() {
        if (number >= 0) {
            ::close(number);
        }
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    const int number;
};

/// The kernel grants a lease for reading only while no descriptor and no shared mapping can
/// write, whatever name it was opened by.
bool isOpenForWriting(int descriptor) {
    // Somebody who opens the file in this moment breaks the lease, of which the kernel tells
    // by a signal. The one that it sends unasked would end the process; this one is ignored.
    ::fcntl(descriptor, F_SETSIG, SIGURG);
    if (::fcntl(descriptor, F_SETLEASE, F_RDLCK) != 0) {
        return true;
    }
    ::fcntl(descriptor, F_SETLEASE, F_UNLCK);
    return false;
}

}  // namespace

std::optional<FileStamp> stampOf(const fs::path& path) {
    struct stat about = {};
    return ::lstat(path.c_str(), &about) == 0 ? stampFrom(about) : std::nullopt;
}

std::optional<FileStamp> stampOfUnwritten(const fs::path& path) {
    // A pipe in the file's place would wait for whoever writes into it.
    const Descriptor file(path, O_RDONLY | O_NONBLOCK);
    struct stat about = {};
    timespec now = {};
    // In this order: what was written before the lease was granted shows in the time.
    if (file.number < 0 || isOpenForWriting(file.number) || ::fstat(file.number, &about) != 0 ||
        ::clock_gettime(CLOCK_REALTIME, &now) != 0 ||
        nanoseconds(now) - nanoseconds(about.st_mtim) < kClockStep) {
        return std::nullopt;
    }
    return stampFrom(about);
}

bool cloneFile(const fs::path& file, const fs::path& name) {
    const Descriptor from(file, O_RDONLY | O_NONBLOCK);
    if (from.number < 0) {
        return false;
    }
    const Descriptor to(name, O_WRONLY | O_CREAT | O_EXCL);
    if (to.number < 0) {
        return false;
    }
    if (::ioctl(to.number, FICLONE, from.number) != 0) {
        ::unlink(name.c_str());
        return false;
    }
    return true;
}

bool linkFile(const fs::path& file, const fs::path& name) {
    return ::link(file.c_str(), name.c_str()) == 0;
}

}  // namespace files
