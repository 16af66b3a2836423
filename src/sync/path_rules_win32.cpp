#include "sync/safe_path.h"

namespace quorvelle {

bool staysInside(const QString& safePath) {
    return isWindowsSafePath(safePath);
}

}  // namespace quorvelle
