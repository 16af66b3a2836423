#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <QFile>
#include <cerrno>

#include "files/secret_file.h"

namespace quorvelle {

namespace {

constexpr mode_t kOwnerOnly = S_IRUSR | S_IWUSR;

/// Devices and pipes have their own permissions, which stay as they are.
bool keepFromOthers(int descriptor) {
    struct stat status = {};
    return ::fstat(descriptor, &status) == 0 &&
           (!S_ISREG(status.st_mode) || ::fchmod(descriptor, kOwnerOnly) == 0);
}

bool writeAll(int descriptor, const QByteArray& bytes) {
    qsizetype done = 0;
    while (done < bytes.size()) {
        const ssize_t written =
            ::write(descriptor, bytes.constData() + done, std::size_t(bytes.size() - done));
        if (written < 0 && errno != EINTR) {
            return false;
        }
        done += written > 0 ? written : 0;
    }
    return true;
}

bool flush(int descriptor) {
    // Pipes and devices know no flush.
    return ::fsync(descriptor) == 0 || errno == EINVAL || errno == ENOTSUP || errno == ENOSYS;
}

}  // namespace

struct SecretFile::Handle {
    QByteArray path;
    int descriptor = -1;
    bool isNew = false;
};

SecretFile::SecretFile() = default;

SecretFile::~SecretFile() {
    if (handle) {
        ::close(handle->descriptor);
        if (handle->isNew) {
            ::unlink(handle->path.constData());
        }
    }
}

bool SecretFile::open(const QString& path) {
    auto opened = std::make_unique<Handle>();
    opened->path = QFile::encodeName(path);
    const char* name = opened->path.constData();
    opened->descriptor = ::open(name, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kOwnerOnly);
    opened->isNew = opened->descriptor >= 0;
    if (!opened->isNew) {
        opened->descriptor = ::open(name, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, kOwnerOnly);
    }
    if (opened->descriptor < 0) {
        return false;
    }
    handle = std::move(opened);
    return keepFromOthers(handle->descriptor);
}

bool SecretFile::write(const QByteArray& text) {
    const std::unique_ptr<Handle> written = std::move(handle);
    const bool stored =
        written && writeAll(written->descriptor, text) && flush(written->descriptor);
    return written && ::close(written->descriptor) == 0 && stored;
}

}  // namespace quorvelle
