#include "files/process_lock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QFile>
#include <cerrno>
#include <string>
#include <system_error>

namespace quorvelle {

struct ProcessLock::Holding {
    QByteArray path;
    int descriptor = -1;

    ~Holding() {
        // Removed while the lock is held: whoever waits for this file sees, once
        // it has the lock, that the name no longer stands for it.
        ::unlink(path.constData());
        ::close(descriptor);
    }
};

namespace {

constexpr mode_t kOwnersFile = S_IRUSR | S_IWUSR;
constexpr mode_t kEverybodysFile = kOwnersFile | S_IRGRP | S_IWGRP | S_IROTH | S_IWOTH;

/// A link in the file's place is never followed, and a pipe not waited for.
constexpr int kOpening = O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK;

/// How often a file may vanish between two looks at it before it counts as missing.
constexpr int kMaxLooks = 100;

/// The file at `path`, made when it is missing, or -1 with errno set.
int openLockFile(const char* path, mode_t mode) {
    for (int looks = 0; looks < kMaxLooks; ++looks) {
        const int made = ::open(path, O_RDWR | O_CREAT | kOpening, mode);
        if (made >= 0 || (errno != EACCES && errno != EPERM && errno != EROFS)) {
            return made;
        }
        // Another user's file is refused for writing, and in a folder such as /tmp for
        // creation too, but it can be locked as soon as it can be read.
        const int read = ::open(path, O_RDONLY | kOpening);
        if (read >= 0 || errno != ENOENT) {
            return read;
        }
    }
    return -1;
}

bool lockDescriptor(int descriptor, int operation) {
    int result = 0;
    do {
        result = ::flock(descriptor, operation);
    } while (result != 0 && errno == EINTR);
    return result == 0;
}

bool isStillNamed(int descriptor, const char* path) {
    struct stat opened = {};
    struct stat named = {};
    return ::fstat(descriptor, &opened) == 0 && ::lstat(path, &named) == 0 &&
           opened.st_dev == named.st_dev && opened.st_ino == named.st_ino;
}

/// The locked descriptor of the file at `path`, or -1 with errno set.
int openLocked(const char* path, int operation, mode_t mode) {
    for (;;) {
        const int descriptor = openLockFile(path, mode);
        if (descriptor < 0) {
            return -1;
        }
        if (!lockDescriptor(descriptor, operation)) {
            const int error = errno;
            ::close(descriptor);
            errno = error;
            return -1;
        }
        if (isStillNamed(descriptor, path)) {
            return descriptor;
        }
        ::close(descriptor);
    }
}

bool somethingStandsAt(const char* path) {
    struct stat found = {};
    return ::lstat(path, &found) == 0;
}

}  // namespace

ProcessLock::ProcessLock() = default;
ProcessLock::~ProcessLock() = default;

ProcessLock::Outcome ProcessLock::take(const QString& path, bool wait) {
    const QByteArray name = QFile::encodeName(path);
    const int descriptor = openLocked(name.constData(), wait ? LOCK_EX : LOCK_EX | LOCK_NB,
                                      wait ? kOwnersFile : kEverybodysFile);
    const int error = errno;
    holding.reset(descriptor < 0 ? nullptr : new Holding{name, descriptor});
    if (holding) {
        return Outcome::kHeld;
    }
    if (error == EWOULDBLOCK) {
        return Outcome::kBusy;
    }
    if (!somethingStandsAt(name.constData())) {
        return Outcome::kNoPlace;
    }
    const std::string reason = std::system_category().message(error);
    refusal = error == ELOOP ? QStringLiteral("it is a symbolic link")
                             : QString::fromLocal8Bit(reason.c_str());
    return Outcome::kRefused;
}

void ProcessLock::release() {
    holding.reset();
}

}  // namespace quorvelle
