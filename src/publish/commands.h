#pragma once

#include <QStringList>

/// The commands with which builds are published: handlers of the command table.

namespace quorvelle {

/// push <dir> --channel <name> [--build <id>] [--server <url>]: uploads a directory
/// file by file as a build, finalizes it and promotes it into the channel.
int pushCommand(QStringList args);

/// promote <channel> (<build-id> | --from <channel>) [--server <url>]: points a channel
/// at a build, or at the build that another channel points at.
int promoteCommand(QStringList args);

}  // namespace quorvelle
