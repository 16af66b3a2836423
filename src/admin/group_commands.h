#pragma once

#include <QStringList>

/// The groups of a server, whose members follow their channels. Handlers as the command
/// table wants them.

namespace quorvelle {

/// `groups`: every group with its channels and members.
int groupsCommand(QStringList args);

/// `group create <name>`.
int groupCreateCommand(QStringList args);

/// `group delete <name>`: its members stay as users.
int groupDeleteCommand(QStringList args);

/// `group assign-channel <group> <channel>`.
int groupAssignChannelCommand(QStringList args);

/// `group unassign-channel <group> <channel>`.
int groupUnassignChannelCommand(QStringList args);

}  // namespace quorvelle
