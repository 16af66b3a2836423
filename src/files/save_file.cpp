#include "files/save_file.h"

namespace quorvelle {

bool saveWhole(const QString& path, const QByteArray& bytes, Access access) {
    SaveFile file(path);
    return file.open(access) && file.write(bytes) && file.commit();
}

}  // namespace quorvelle
