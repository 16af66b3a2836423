#include <QStandardPaths>

#include "files/home_folder.h"

namespace quorvelle {

bool findHomeFolder() {
    // Without a profile there is none, and the paths below it would begin at the drive's root.
    return !QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation).isEmpty();
}

}  // namespace quorvelle
