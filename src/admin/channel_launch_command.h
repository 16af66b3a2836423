#pragma once

#include <QStringList>

/// What a channel's administrator does with its launch targets. Changes read the whole
/// list, change it and write it back.

namespace quorvelle {

/// channel launch list <channel> [--server <url>]
int channelLaunchListCommand(QStringList args);

/// channel launch add <channel> --label <l> --exe <rel-path> [--args <a>] [--primary]
/// [--server <url>]: a label that is there already gets the new executable and arguments.
int channelLaunchAddCommand(QStringList args);

/// channel launch remove <channel> <label> [--server <url>]
int channelLaunchRemoveCommand(QStringList args);

/// channel launch primary <channel> (<label> | --clear) [--server <url>]
int channelLaunchPrimaryCommand(QStringList args);

/// channel launch clear <channel> [--server <url>]
int channelLaunchClearCommand(QStringList args);

}  // namespace quorvelle
