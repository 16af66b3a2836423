#include "client/save_file.h"

#include "client/disk_flush.h"
#include "client/private_file.h"

namespace quorvelle {

SaveFile::SaveFile(const QString& path) : file(path) {}

bool SaveFile::open(Access access) {
    return access == Access::kOwnerOnly ? openOwnerOnly(file) : file.open(QIODevice::WriteOnly);
}

bool SaveFile::write(const QByteArray& bytes) {
    writeFailed = writeFailed || file.write(bytes) != bytes.size();
    return !writeFailed;
}

bool SaveFile::commit() {
    // QSaveFile notices a failed write() but not a failure of the flushes in its own
    // commit: that to the system, where a small file is written for the first time, and
    // that to the disk.
    if (writeFailed || !file.flush() || !flushToDisk(file)) {
        file.cancelWriting();
    }
    return file.commit();
}

bool saveWhole(const QString& path, const QByteArray& bytes, Access access) {
    SaveFile file(path);
    return file.open(access) && file.write(bytes) && file.commit();
}

}  // namespace quorvelle
