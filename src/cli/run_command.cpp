#include <utility>

#include "cli/commands.h"
#include "launch/commands.h"
#include "sync/markers.h"

namespace quorvelle {

int runCommand(QStringList args) {
    return runTargetCommand(std::move(args), isInstalled);
}

}  // namespace quorvelle
