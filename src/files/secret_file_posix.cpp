#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QFile>

#include "files/descriptor_posix.h"
#include "files/secret_file.h"

namespace quorvelle {

namespace {

using files::posix::kOwnerOnlyMode;

bool isRegular(int descriptor) {
    struct stat status = {};
    return ::fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode);
}

/// Devices and pipes have their own permissions, which stay as they are.
bool keepFromOthers(int descriptor) {
    return !isRegular(descriptor) || ::fchmod(descriptor, kOwnerOnlyMode) == 0;
}

/// Takes away what is left of a longer text. It comes last: a write that is refused before
/// it loses nothing.
bool cutOff(int descriptor, qsizetype size) {
    return !isRegular(descriptor) || ::ftruncate(descriptor, size) == 0;
}

/// From here on a reader that is slow is waited for.
bool letWait(int descriptor) {
    const int flags = ::fcntl(descriptor, F_GETFL);
    return flags >= 0 && ::fcntl(descriptor, F_SETFL, flags & ~O_NONBLOCK) == 0;
}

}  // namespace

struct SecretFile::Handle {
    /// Removes the file that it made, unless it was written.
    ~Handle() {
        ::close(descriptor);
        if (isNew && !isWritten) {
            ::unlink(path.constData());
        }
    }

    QByteArray path;
    int descriptor = -1;
    bool isNew = false;
    bool isWritten = false;
};

SecretFile::SecretFile() = default;
SecretFile::~SecretFile() = default;

bool SecretFile::open(const QString& path) {
    const QByteArray name = QFile::encodeName(path);
    constexpr int kFlags = O_WRONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
    int descriptor = ::open(name.constData(), kFlags | O_CREAT | O_EXCL, kOwnerOnlyMode);
    const bool isNew = descriptor >= 0;
    if (!isNew) {
        descriptor = ::open(name.constData(), kFlags);
    }
    if (descriptor < 0) {
        return false;
    }
    handle = std::make_unique<Handle>();
    handle->path = name;
    handle->descriptor = descriptor;
    handle->isNew = isNew;
    return keepFromOthers(descriptor) && letWait(descriptor);
}

bool SecretFile::write(const QByteArray& text) {
    const std::unique_ptr<Handle> file = std::move(handle);
    if (!file) {
        return false;
    }
    const int descriptor = file->descriptor;
    file->isWritten =
        files::posix::writeAll(descriptor, text.constData(), std::size_t(text.size())) &&
        cutOff(descriptor, text.size()) && files::posix::flush(descriptor);
    return file->isWritten;
}

}  // namespace quorvelle
