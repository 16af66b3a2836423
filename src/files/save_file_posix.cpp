#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QFile>
#include <cerrno>
#include <cstdio>
#include <optional>

#include "files/descriptor_posix.h"
#include "files/save_file.h"

namespace quorvelle {

namespace {

constexpr int kMaxNames = 16;
/// Less what the process's umask takes away.
constexpr mode_t kNewFileMode = 0666;
constexpr mode_t kPermissions = 0777;
constexpr qsizetype kFlushStep = 8 << 20;

}  // namespace

struct SaveFile::File {
    QByteArray target;
    QByteArray temporary = {};
    int descriptor = -1;
    bool writeFailed = false;
    /// Bytes written since the last were sent on their way to the disk.
    qsizetype unsent = 0;

    explicit File(const QString& path) : target(QFile::encodeName(savedPath(path))) {}
    ~File() {
        if (descriptor >= 0) {
            ::close(descriptor);
            remove();
        }
    }
    File(const File&) = delete;
    File& operator=(const File&) = delete;

    /// The permissions of the file that is there, or nothing where there is none.
    std::optional<mode_t> permissions() const {
        struct stat status = {};
        return ::stat(target.constData(), &status) == 0
                   ? std::optional<mode_t>(status.st_mode & kPermissions)
                   : std::nullopt;
    }

    /// What its owner protected against writing, and a directory, stays.
    bool mayBeReplaced() const {
        struct stat status = {};
        return ::stat(target.constData(), &status) != 0 ||
               (!S_ISDIR(status.st_mode) && ::access(target.constData(), W_OK) == 0);
    }

    bool create(mode_t mode) {
        errno = EEXIST;
        for (int i = 0; i < kMaxNames && descriptor < 0 && errno == EEXIST; ++i) {
            temporary = QFile::encodeName(temporaryPath(QFile::decodeName(target)));
            descriptor =
                ::open(temporary.constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode);
        }
        return descriptor >= 0;
    }

    bool close(OnDisk when) {
        const bool flushed =
            !writeFailed && (when == OnDisk::kLater || files::posix::flush(descriptor));
        const bool closed = ::close(descriptor) == 0;
        descriptor = -1;
        return flushed && closed;
    }

    void remove() const { ::unlink(temporary.constData()); }
};

SaveFile::SaveFile(const QString& path) : file(std::make_unique<File>(path)) {}
SaveFile::~SaveFile() = default;

bool SaveFile::open(Access access) {
    if (!file->mayBeReplaced()) {
        return false;
    }
    if (access == Access::kOwnerOnly) {
        return file->create(files::posix::kOwnerOnlyMode);
    }
    const auto permissions = file->permissions();
    if (!permissions) {
        return file->create(kNewFileMode);
    }
    // The new content is seen by nobody who could not see the old one.
    const bool created = file->create(files::posix::kOwnerOnlyMode);
    if (created) {
        ::fchmod(file->descriptor, *permissions);
    }
    return created;
}

bool SaveFile::write(const QByteArray& bytes) {
    file->writeFailed =
        file->writeFailed ||
        !files::posix::writeAll(file->descriptor, bytes.constData(), std::size_t(bytes.size()));
    file->unsent += bytes.size();
    if (file->unsent >= kFlushStep) {
        files::posix::beginFlush(file->descriptor);
        file->unsent = 0;
    }
    return !file->writeFailed;
}

bool SaveFile::commit(OnDisk when) {
    if (file->descriptor < 0) {
        return false;
    }
    if (!file->close(when) ||
        std::rename(file->temporary.constData(), file->target.constData()) != 0) {
        file->remove();
        return false;
    }
    return true;
}

}  // namespace quorvelle
