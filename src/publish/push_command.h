#pragma once

#include <QStringList>

namespace quorvelle {

/// push <dir> --channel <name> [--build <id>] [--server <url>]: uploads a directory
/// file by file as a build, finalizes it and promotes it into the channel.
int pushCommand(QStringList args);

}  // namespace quorvelle
