#pragma once

#include <QStringList>

namespace quorvelle {

/// promote <channel> (<build-id> | --from <channel>) [--server <url>]: points a channel
/// at a build, or at the build that another channel points at.
int promoteCommand(QStringList args);

}  // namespace quorvelle
