#pragma once

#include <QStringList>

/// The channels of a server. Handlers as the command table wants them.

namespace quorvelle {

/// `channels`: every channel and the build that it points at.
int channelsCommand(QStringList args);

/// `channel create <name>`.
int channelCreateCommand(QStringList args);

/// `channel delete <name>`: its builds stay.
int channelDeleteCommand(QStringList args);

/// `channel public <name> true|false`: whether it can be read without a token.
int channelPublicCommand(QStringList args);

}  // namespace quorvelle
