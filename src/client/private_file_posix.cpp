#include <sys/stat.h>

#include <QSaveFile>

#include "client/private_file.h"

namespace quorvelle {

bool openOwnerOnly(QSaveFile& file) {
    const mode_t before = ::umask(S_IRWXG | S_IRWXO);
    const bool opened = file.open(QIODevice::WriteOnly);
    ::umask(before);
    // A file that exists already hands its permissions to its successor.
    return opened && file.setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner);
}

}  // namespace quorvelle
