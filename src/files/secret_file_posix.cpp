#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QFile>

#include "files/descriptor_posix.h"
#include "files/secret_file.h"

namespace quorvelle {

namespace {

using files::posix::kOwnerOnlyMode;

/// Devices and pipes have their own permissions, which stay as they are.
bool keepFromOthers(int descriptor) {
    struct stat status = {};
    return ::fstat(descriptor, &status) == 0 &&
           (!S_ISREG(status.st_mode) || ::fchmod(descriptor, kOwnerOnlyMode) == 0);
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
    opened->descriptor = ::open(name, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kOwnerOnlyMode);
    opened->isNew = opened->descriptor >= 0;
    if (!opened->isNew) {
        opened->descriptor = ::open(name, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, kOwnerOnlyMode);
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
        written &&
        files::posix::writeAll(written->descriptor, text.constData(), std::size_t(text.size())) &&
        files::posix::flush(written->descriptor);
    return written && ::close(written->descriptor) == 0 && stored;
}

}  // namespace quorvelle
