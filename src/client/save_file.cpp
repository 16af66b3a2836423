#include "client/save_file.h"

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
    // QSaveFile notices a failed write() but not a failure of the flush in its own
    // commit, where a small file is written for the first time.
    if (writeFailed || !file.flush()) {
        file.cancelWriting();
    }
    return file.commit();
}

bool saveWhole(const QString& path, const QByteArray& bytes, Access access) {
    SaveFile file(path);
    return file.open(access) && file.write(bytes) && file.commit();
}

}  // namespace quorvelle
