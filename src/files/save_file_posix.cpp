#include <sys/stat.h>
#include <unistd.h>

#include <QSaveFile>
#include <cerrno>

#include "files/save_file.h"

namespace quorvelle {

struct SaveFile::File {
    explicit File(const QString& path) : target(path) {}

    QSaveFile target;
    bool writeFailed = false;
};

namespace {

/// The temporary file is the owner's alone from its creation on.
bool openOwnerOnly(QSaveFile& file) {
    const mode_t before = ::umask(S_IRWXG | S_IRWXO);
    const bool opened = file.open(QIODevice::WriteOnly);
    ::umask(before);
    // A file that exists already hands its permissions to its successor.
    return opened && file.setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner);
}

/// A file that knows no flush to the disk counts as done.
bool flushToDisk(const QSaveFile& file) {
    return ::fsync(file.handle()) == 0 || errno == EINVAL || errno == ENOTSUP || errno == ENOSYS;
}

}  // namespace

SaveFile::SaveFile(const QString& path) : file(std::make_unique<File>(path)) {}
SaveFile::~SaveFile() = default;

bool SaveFile::open(Access access) {
    return access == Access::kOwnerOnly ? openOwnerOnly(file->target)
                                        : file->target.open(QIODevice::WriteOnly);
}

bool SaveFile::write(const QByteArray& bytes) {
    file->writeFailed = file->writeFailed || file->target.write(bytes) != bytes.size();
    return !file->writeFailed;
}

bool SaveFile::commit() {
    // QSaveFile notices a failed write() but not a failure of the flushes in its own
    // commit: that to the system, where a small file is written for the first time, and
    // that to the disk.
    if (file->writeFailed || !file->target.flush() || !flushToDisk(file->target)) {
        file->target.cancelWriting();
    }
    return file->target.commit();
}

}  // namespace quorvelle
