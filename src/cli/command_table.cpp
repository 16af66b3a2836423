#include "cli/command_table.h"

#include "account/join_command.h"
#include "account/login_command.h"
#include "account/reconcile_command.h"
#include "admin/access_request_commands.h"
#include "admin/backup_commands.h"
#include "admin/build_commands.h"
#include "admin/channel_commands.h"
#include "admin/channel_launch_command.h"
#include "admin/group_commands.h"
#include "admin/invite_commands.h"
#include "admin/license_commands.h"
#include "admin/server_version_command.h"
#include "admin/sso_commands.h"
#include "admin/storage_commands.h"
#include "admin/token_command.h"
#include "admin/user_commands.h"
#include "admin/whoami_command.h"
#include "cli/config_command.h"
#include "cli/server_entry_commands.h"
#include "cli/subscription_commands.h"
#include "cli/version_command.h"
#include "launch/run_command.h"
#include "onboarding/storage_init_command.h"
#include "publish/promote_command.h"
#include "publish/push_command.h"
#include "sync/sync_command.h"

namespace quorvelle {

namespace {

constexpr Command kCommands[] = {
    {.words = "config",
     .handler = configCommand,
     .summary = "show or change the default server and token",
     .usage = "  quorvelle config list\n"
              "  quorvelle config get server|token\n"
              "  quorvelle config set server <url>       default server for push etc.\n"
              "  quorvelle config set token <token>      default auth token\n"},
    {.words = "subscribe",
     .handler = subscribeCommand,
     .summary = "bind an install directory to a channel",
     .usage = "  quorvelle subscribe <server> <channel> --dir <path>\n"
              "            [--name <name>] [--interval <seconds|manual|default>]\n"
              "            [--self-heal <none|quick|full|default>] [--token <token>]\n"},
    {.words = "unsubscribe",
     .handler = unsubscribeCommand,
     .summary = "forget a subscription, keeping its files",
     .usage = "  quorvelle unsubscribe <name>\n"},
    {.words = "subscriptions",
     .handler = subscriptionsCommand,
     .summary = "list the subscriptions",
     .usage = "  quorvelle subscriptions\n"},
    {.words = "subscription set-interval",
     .handler = setIntervalCommand,
     .summary = "change how often a subscription syncs by itself",
     .usage = "  quorvelle subscription set-interval <name> <seconds|manual|default>\n"},
    {.words = "subscription set-self-heal",
     .handler = setSelfHealCommand,
     .summary = "change how an up-to-date install is checked",
     .usage = "  quorvelle subscription set-self-heal <name> <none|quick|full|default>\n"
              "            Tide channels: check an up-to-date install against the manifest\n"},
    {.words = "backups",
     .handler = backupsCommand,
     .summary = "show a server's backups",
     .usage = "  quorvelle backups [--server <url>]\n"},
    {.words = "run",
     .handler = runCommand,
     .summary = "start a launch target of an installed build",
     .usage = "  quorvelle run <subscription> [--target <label>] [--wait] [-- <extra args>]\n"},
    {.words = "backup schedule",
     .handler = backupScheduleCommand,
     .summary = "back a server up every day, or no longer",
     .usage = "  quorvelle backup schedule <HH:MM|off> [--keep <N>] [--server <url>]\n"},
    {.words = "backup init",
     .handler = backupInitCommand,
     .summary = "set up where a server's backups go",
     .usage = "  quorvelle backup init (--shared | --endpoint <url> --bucket <b>\n"
              "            --access-key <k> --secret-key <s> [--region <r>]) [--server <url>]\n"},
    {.words = "backup forget",
     .handler = backupForgetCommand,
     .summary = "let a server forget where its backups go, keeping them",
     .usage = "  quorvelle backup forget [--server <url>]\n"},
    {.words = "sso",
     .handler = ssoCommand,
     .summary = "show or change a server's single sign-on",
     .usage = "  quorvelle sso show|test|clear [--server <url>]\n"
              "  quorvelle sso set --issuer <url> --client-id <id> --client-secret <s>\n"
              "            [--scopes <scopes>] [--server <url>]\n"
              "  quorvelle sso map list [--server <url>]\n"
              "  quorvelle sso map role <idp-role> admin|publisher|member [--server <url>]\n"
              "  quorvelle sso map group <idp-group> <group> [--server <url>]\n"
              "  quorvelle sso map remove <idp-role-or-group> [--server <url>]\n"
              "  quorvelle sso map default <role> [--server <url>]\n"
              "  quorvelle sso map claims --roles <claim> --groups <claim> [--server <url>]\n"},
    {.words = "storage init",
     .handler = storageInitCommand,
     .summary = "create a Cloudflare R2 bucket and connect a server to it",
     .usage = "  quorvelle storage init [--bucket <name>] [--jurisdiction eu|us|none] "
              "[--single-token]\n"
              "            [--account-id <id>] [--token-file <path>] [--server <url>]\n"
              "            [--yes] [--ci-secret-file <path>]\n"
              "            Cloudflare R2 onboarding; token from CLOUDFLARE_API_TOKEN or "
              "--token-file\n"
              "            without --yes it only reports what it would do\n"},
    {.words = "storage",
     .handler = storageCommand,
     .summary = "show or change where a server keeps tide builds",
     .usage = "  quorvelle storage show|test|forget [--server <url>]\n"
              "  quorvelle storage set --endpoint <url> --bucket <b> --access-key <k>\n"
              "            --secret-key <s> [--region <r>] [--server <url>]\n"},
    {.words = "backup",
     .handler = backupCommand,
     .summary = "start a backup of a server now",
     .usage = "  quorvelle backup [--server <url>]\n"},
    {.words = "server set-root",
     .leastArguments = 2,
     .mostArguments = 2,
     .handler = setServerRootCommand,
     .summary = "move a joined server's install root",
     .usage = "  quorvelle server set-root <url> <path>\n"},
    {.words = "server set-token",
     .leastArguments = 2,
     .mostArguments = 2,
     .handler = setServerTokenCommand,
     .summary = "store a joined server's token",
     .usage = "  quorvelle server set-token <url> <token>\n"},
    {.words = "server-version",
     .handler = serverVersionCommand,
     .summary = "show a server's version",
     .usage = "  quorvelle server-version [--server <url>]\n"},
    {.words = "push",
     .handler = pushCommand,
     .summary = "publish a directory as a build and promote it into a channel",
     .usage = "  quorvelle push <dir> --channel <name> [--build <id>] [--server <url>]\n"},
    {.words = "builds",
     .handler = buildsCommand,
     .summary = "list a server's builds",
     .usage = "  quorvelle builds [--server <url>]\n"},
    {.words = "build delete",
     .handler = buildDeleteCommand,
     .summary = "delete a build",
     .usage = "  quorvelle build delete <id> [--server <url>]\n"},
    {.words = "build disable",
     .handler = buildDisableCommand,
     .summary = "forbid promoting a build",
     .usage = "  quorvelle build disable|enable <id> [--server <url>]\n"},
    {.words = "build enable",
     .handler = buildEnableCommand,
     .summary = "allow promoting a build again",
     .usage = ""},
    {.words = "build",
     .leastArguments = 1,
     .handler = buildCommand,
     .summary = "show one build and its files",
     .usage = "  quorvelle build <id> [--server <url>]            show one build's files\n"},
    {.words = "channels",
     .handler = channelsCommand,
     .summary = "list a server's channels",
     .usage = "  quorvelle channels [--server <url>]\n"},
    {.words = "channel create",
     .handler = channelCreateCommand,
     .summary = "create a channel",
     .usage = "  quorvelle channel create <name> [--server <url>]\n"},
    {.words = "channel delete",
     .handler = channelDeleteCommand,
     .summary = "delete a channel, keeping its builds",
     .usage = "  quorvelle channel delete <name> [--server <url>]\n"},
    {.words = "channel public",
     .handler = channelPublicCommand,
     .summary = "let everybody read a channel, or no longer",
     .usage = "  quorvelle channel public <name> true|false [--server <url>]\n"},
    {.words = "channel launch list",
     .leastArguments = 1,
     .handler = channelLaunchListCommand,
     .summary = "list a channel's launch targets",
     .usage = "  quorvelle channel launch list <channel> [--server <url>]\n"},
    {.words = "channel launch add",
     .leastArguments = 1,
     .handler = channelLaunchAddCommand,
     .summary = "add or replace a launch target of a channel",
     .usage = "  quorvelle channel launch add <channel> --label <l> --exe <rel-path> [--args <a>] "
              "[--primary] [--server <url>]\n"},
    {.words = "channel launch remove",
     .leastArguments = 1,
     .handler = channelLaunchRemoveCommand,
     .summary = "remove a launch target from a channel",
     .usage = "  quorvelle channel launch remove <channel> <label> [--server <url>]\n"},
    {.words = "channel launch primary",
     .leastArguments = 1,
     .handler = channelLaunchPrimaryCommand,
     .summary = "choose the launch target that runs by default",
     .usage =
         "  quorvelle channel launch primary <channel> (<label> | --clear) [--server <url>]\n"},
    {.words = "channel launch clear",
     .leastArguments = 1,
     .handler = channelLaunchClearCommand,
     .summary = "remove all launch targets from a channel",
     .usage = "  quorvelle channel launch clear <channel> [--server <url>]\n"},
    {.words = "promote",
     .handler = promoteCommand,
     .summary = "point a channel at a build",
     .usage = "  quorvelle promote <channel> (<build-id> | --from <channel>) [--server <url>]\n"},
    {.words = "whoami",
     .handler = whoamiCommand,
     .summary = "show who the server takes this client for",
     .usage = "  quorvelle whoami [--server <url>]\n"},
    {.words = "users",
     .handler = usersCommand,
     .summary = "list a server's users",
     .usage = "  quorvelle users [--server <url>]\n"},
    {.words = "token create",
     .handler = tokenCreateCommand,
     .summary = "make a token for a service account",
     .usage = "  quorvelle token create <name> --user <service-account> [--server <url>]\n"},
    {.words = "user create",
     .handler = userCreateCommand,
     .summary = "create a user or a service account",
     .usage = "  quorvelle user create <name> [--role admin|member|publisher] [--service] "
              "[--server <url>]\n"},
    {.words = "user join-group",
     .handler = userJoinGroupCommand,
     .summary = "put a user into a group",
     .usage = "  quorvelle user join-group|leave-group <user> <group> [--server <url>]\n"},
    {.words = "user leave-group",
     .handler = userLeaveGroupCommand,
     .summary = "take a user out of a group",
     .usage = ""},
    {.words = "user follow",
     .handler = userFollowCommand,
     .summary = "assign a channel to a user",
     .usage = "  quorvelle user follow|unfollow <user> <channel> [--server <url>]\n"},
    {.words = "user unfollow",
     .handler = userUnfollowCommand,
     .summary = "no longer assign a channel to a user",
     .usage = ""},
    {.words = "user disable",
     .handler = userDisableCommand,
     .summary = "lock a user out",
     .usage = "  quorvelle user disable|enable <user> [--server <url>]\n"},
    {.words = "user enable",
     .handler = userEnableCommand,
     .summary = "let a user in again",
     .usage = ""},
    {.words = "user delete",
     .handler = userDeleteCommand,
     .summary = "delete a user with all tokens",
     .usage = "  quorvelle user delete <user> [--server <url>]\n"},
    {.words = "user set-role",
     .handler = userSetRoleCommand,
     .summary = "change a user's role",
     .usage = "  quorvelle user set-role <name> admin|member|publisher [--channels <a,b>] "
              "[--server <url>]\n"},
    {.words = "groups",
     .handler = groupsCommand,
     .summary = "list a server's groups",
     .usage = "  quorvelle groups [--server <url>]\n"},
    {.words = "invite create",
     .handler = inviteCreateCommand,
     .summary = "invite a user",
     .usage = "  quorvelle invite create <user> [--groups <a,b>] [--days <n>] [--server <url>]\n"},
    {.words = "invite revoke",
     .handler = inviteRevokeCommand,
     .summary = "take an invite back",
     .usage = "  quorvelle invite revoke <id> [--server <url>]\n"},
    {.words = "invites",
     .handler = invitesCommand,
     .summary = "list the outstanding invites",
     .usage = "  quorvelle invites [--server <url>]\n"},
    {.words = "login",
     .handler = loginCommand,
     .summary = "sign in to a server through the browser",
     .usage = "  quorvelle login <server> [--install-root <path>] [--no-browser]\n"},
    {.words = "request-access",
     .handler = requestAccessCommand,
     .summary = "ask a server's administrators for an invite",
     .usage =
         "  quorvelle request-access <server> --name <user> --email <addr> [--message <text>]\n"},
    {.words = "requests",
     .handler = requestsCommand,
     .summary = "list the pending access requests",
     .usage = "  quorvelle requests [--server <url>]\n"},
    {.words = "request approve",
     .handler = requestApproveCommand,
     .summary = "answer an access request with an invite",
     .usage = "  quorvelle request approve <id> [--groups <a,b>] [--days <n>] [--server <url>]\n"},
    {.words = "request decline",
     .handler = requestDeclineCommand,
     .summary = "turn an access request down",
     .usage = "  quorvelle request decline <id> [--server <url>]\n"},
    {.words = "license request-trial",
     .handler = requestTrialCommand,
     .summary = "get a trial license and install it on a server",
     .usage = "  quorvelle license request-trial --name <licensee> [--server <url>]\n"},
    {.words = "license",
     .handler = licenseCommand,
     .summary = "show a server's license and the seats in use",
     .usage = "  quorvelle license [--server <url>]\n"},
    {.words = "cloud portal",
     .handler = cloudPortalCommand,
     .summary = "get a link to a hosted server's billing portal",
     .usage = "  quorvelle cloud portal [--server <url>]\n"},
    {.words = "join",
     .handler = joinCommand,
     .summary = "redeem an invite and follow the assigned channels",
     .usage = "  quorvelle join <server> <code> [--install-root <path>] [--machine <name>]\n"},
    {.words = "reconcile",
     .handler = reconcileCommand,
     .summary = "match the subscriptions with what the joined servers assign",
     .usage = "  quorvelle reconcile\n"},
    {.words = "group create",
     .handler = groupCreateCommand,
     .summary = "create a group",
     .usage = "  quorvelle group create <name> [--server <url>]\n"},
    {.words = "group assign-channel",
     .handler = groupAssignChannelCommand,
     .summary = "assign a channel to a group",
     .usage =
         "  quorvelle group assign-channel|unassign-channel <group> <channel> [--server <url>]\n"},
    {.words = "group unassign-channel",
     .handler = groupUnassignChannelCommand,
     .summary = "no longer assign a channel to a group",
     .usage = ""},
    {.words = "group delete",
     .handler = groupDeleteCommand,
     .summary = "delete a group, keeping its members",
     .usage = "  quorvelle group delete <name> [--server <url>]\n"},
    {.words = "sync",
     .handler = syncCommand,
     .summary = "bring install directories to their channels' builds",
     .usage = "  quorvelle sync [--name <subscription> | --server <url>] [--force]\n"},
    {.words = "--version", .handler = versionCommand, .summary = "print the version", .usage = ""},
    {.words = "version",
     .handler = versionCommand,
     .summary = "print the version",
     .usage = "  quorvelle version\n"},
};

}  // namespace

CommandTable commandTable() {
    return kCommands;
}

}  // namespace quorvelle
