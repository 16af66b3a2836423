#pragma once

#include <QStringList>

/// What administrators ask of a server: the handlers of the command table, by their nouns.
/// Each takes the arguments after the command's words and returns the exit code; "--server"
/// chooses the server, the configured one is the default.

namespace quorvelle {

/// `builds`: every build, its size and the channels that point at it.
int buildsCommand(QStringList args);

/// `build <id>`: one build with its files.
int buildCommand(QStringList args);

/// `build delete <id>`.
int buildDeleteCommand(QStringList args);

/// `build disable <id>`: the build can no longer be promoted.
int buildDisableCommand(QStringList args);

/// `build enable <id>`.
int buildEnableCommand(QStringList args);

/// `channels`: every channel and the build that it points at.
int channelsCommand(QStringList args);

/// `channel create <name>`.
int channelCreateCommand(QStringList args);

/// `channel delete <name>`: its builds stay.
int channelDeleteCommand(QStringList args);

/// `channel public <name> true|false`: whether it can be read without a token.
int channelPublicCommand(QStringList args);

/// `channel launch list <channel>`.
int channelLaunchListCommand(QStringList args);

/// `channel launch add <channel> --label <l> --exe <rel-path> [--args <a>] [--primary]`: a label
/// that is there already gets the new executable and arguments.
int channelLaunchAddCommand(QStringList args);

/// `channel launch remove <channel> <label>`.
int channelLaunchRemoveCommand(QStringList args);

/// `channel launch primary <channel> (<label> | --clear)`.
int channelLaunchPrimaryCommand(QStringList args);

/// `channel launch clear <channel>`.
int channelLaunchClearCommand(QStringList args);

/// `request-access <server> --name <user> --email <addr> [--message <text>]`: goes without
/// a token and needs no configuration.
int requestAccessCommand(QStringList args);

/// `requests`: those that wait for an answer.
int requestsCommand(QStringList args);

/// `request approve <id> [--groups <a,b>] [--days <n>]`: makes an invite and prints the
/// mail to send to the newcomer.
int requestApproveCommand(QStringList args);

/// `request decline <id>`.
int requestDeclineCommand(QStringList args);

/// `invite create <user> [--groups <a,b>] [--days <n>]`: shows the code this once.
int inviteCreateCommand(QStringList args);

/// `invite revoke <id>`.
int inviteRevokeCommand(QStringList args);

/// `invites`: those that nobody has redeemed.
int invitesCommand(QStringList args);

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

/// `token create <name> --user <service-account>`: a token for a service account, shown
/// this once.
int tokenCreateCommand(QStringList args);

/// `whoami`: whom the server takes this client for, and what is assigned to that user.
int whoamiCommand(QStringList args);

/// `server-version`: the server's own name and version.
int serverVersionCommand(QStringList args);

/// `license`: the installed license and the seats in use.
int licenseCommand(QStringList args);

/// `license request-trial`: gets a trial license from the licensing service and installs it.
int requestTrialCommand(QStringList args);

/// `cloud portal`: a link to the billing portal that soon expires.
int cloudPortalCommand(QStringList args);

/// `backup`: starts one now.
int backupCommand(QStringList args);

/// `backups`: where they go, when they run, what the last one did, and the snapshots.
int backupsCommand(QStringList args);

/// `backup init`: sets the bucket up, the shared one or one of their own, and shows the
/// encryption key, once.
int backupInitCommand(QStringList args);

/// `backup schedule`: the daily time, and how many snapshots are kept.
int backupScheduleCommand(QStringList args);

/// `backup forget`: the server forgets the bucket; what is in it stays.
int backupForgetCommand(QStringList args);

/// `storage show|test|set|forget`: the bucket that a server keeps the builds of its tide
/// channels in.
int storageSettingsCommand(QStringList args);

/// `sso show|test|set|clear|map`: the OpenID Connect provider through which people sign
/// in to a server. The handler tells the words apart by itself.
int ssoCommand(QStringList args);

}  // namespace quorvelle
