#pragma once

#include <QStringList>

/// The users of a server, service accounts among them. Handlers as the command table
/// wants them.

namespace quorvelle {

/// `users`: every user with the role, the groups and the channels.
int usersCommand(QStringList args);

/// `user create <name> [--role <role>] [--service]`; a service account publishes and
/// takes no seat.
int userCreateCommand(QStringList args);

/// `user delete <user>`, the tokens too.
int userDeleteCommand(QStringList args);

/// `user join-group <user> <group>`.
int userJoinGroupCommand(QStringList args);

/// `user leave-group <user> <group>`.
int userLeaveGroupCommand(QStringList args);

/// `user follow <user> <channel>`: a channel for this user alone.
int userFollowCommand(QStringList args);

/// `user unfollow <user> <channel>`.
int userUnfollowCommand(QStringList args);

/// `user disable <user>`: none of the user's tokens is valid any more.
int userDisableCommand(QStringList args);

/// `user enable <user>`.
int userEnableCommand(QStringList args);

/// `user set-role <name> <role> [--channels <a,b>]`; the channels are those that a
/// publisher may publish to.
int userSetRoleCommand(QStringList args);

}  // namespace quorvelle
