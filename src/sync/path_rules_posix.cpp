#include "sync/safe_path.h"

namespace quorvelle {

bool staysInside(const QString& safePath) {
    return !safePath.contains(QChar::Null);
}

}  // namespace quorvelle
