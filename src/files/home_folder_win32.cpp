#include <QDir>

#include "files/home_folder.h"

namespace quorvelle {

bool findHomeFolder() {
    return !QDir::homePath().isEmpty();
}

}  // namespace quorvelle
