#include "cli/command_table.h"

#include "admin/build_commands.h"
#include "admin/promote_command.h"
#include "admin/push_command.h"
#include "cli/config_command.h"
#include "cli/server_commands.h"
#include "cli/subscription_commands.h"
#include "cli/version_command.h"
#include "onboarding/storage_init_command.h"
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
    {.words = "promote",
     .handler = promoteCommand,
     .summary = "point a channel at a build",
     .usage = "  quorvelle promote <channel> (<build-id> | --from <channel>) [--server <url>]\n"},
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
