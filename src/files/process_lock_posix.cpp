#include "files/process_lock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QFile>
#include <cerrno>

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
    return ::fstat(descriptor, &opened) == 0 && ::stat(path, &named) == 0 &&
           opened.st_dev == named.st_dev && opened.st_ino == named.st_ino;
}

/// The locked descriptor of the file at `path`, or -1 with the outcome set.
int openLocked(const char* path, int operation, ProcessLock::Outcome& outcome) {
    for (;;) {
        const int descriptor = ::open(path, O_RDWR | O_CREAT | O_CLOEXEC, S_IRUSR | S_IWUSR);
        if (descriptor < 0) {
            outcome = ProcessLock::Outcome::kUnavailable;
            return -1;
        }
        if (!lockDescriptor(descriptor, operation)) {
            outcome = errno == EWOULDBLOCK ? ProcessLock::Outcome::kBusy
                                           : ProcessLock::Outcome::kUnavailable;
            ::close(descriptor);
            return -1;
        }
        if (isStillNamed(descriptor, path)) {
            outcome = ProcessLock::Outcome::kHeld;
            return descriptor;
        }
        ::close(descriptor);
    }
}

}  // namespace

ProcessLock::ProcessLock() = default;
ProcessLock::~ProcessLock() = default;

ProcessLock::Outcome ProcessLock::take(const QString& path, bool wait) {
    const QByteArray name = QFile::encodeName(path);
    Outcome outcome = Outcome::kUnavailable;
    const int descriptor =
        openLocked(name.constData(), wait ? LOCK_EX : LOCK_EX | LOCK_NB, outcome);
    holding.reset(descriptor < 0 ? nullptr : new Holding{name, descriptor});
    return outcome;
}

void ProcessLock::release() {
    holding.reset();
}

}  // namespace quorvelle
