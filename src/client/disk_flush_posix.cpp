#include <unistd.h>

#include <QSaveFile>
#include <cerrno>

#include "client/disk_flush.h"

namespace quorvelle {

bool flushToDisk(const QSaveFile& file) {
    return ::fsync(file.handle()) == 0 || errno == EINVAL || errno == ENOTSUP || errno == ENOSYS;
}

}  // namespace quorvelle
