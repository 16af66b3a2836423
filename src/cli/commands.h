#pragma once

#include <QStringList>

/// The commands that talk to no server themselves, and those that join what two rooms do:
/// handlers of the command table.

namespace quorvelle {

/// config [list] | get <key> | set <key> <value>: the default server and token, and an
/// overview of the configuration. Never talks to a server.
int configCommand(QStringList args);

/// subscribe <server> <channel> --dir <path> [--name] [--interval] [--self-heal] [--token]
int subscribeCommand(QStringList args);

/// unsubscribe <name>
int unsubscribeCommand(QStringList args);

/// subscriptions
int subscriptionsCommand(QStringList args);

/// subscription set-interval <name> <seconds|manual|default>
int setIntervalCommand(QStringList args);

/// subscription set-self-heal <name> <none|quick|full|default>
int setSelfHealCommand(QStringList args);

/// server set-root <url> <path>: moves a joined server's install root and with it the
/// directories of its subscriptions. Nothing on disk is touched.
int setServerRootCommand(QStringList args);

/// server set-token <url> <token>: stores a server's token, also on its subscriptions.
int setServerTokenCommand(QStringList args);

/// version, --version: prints the program's version. Ignores further arguments.
int versionCommand(QStringList args);

/// run <subscription> ...: starts a launch target, see runTargetCommand(). What a sync
/// installed is made fit to be started.
int runCommand(QStringList args);

/// storage init|show|test|set|forget: the bucket that a server keeps the builds of its
/// tide channels in. Finds the word wherever it stands between the options.
int storageCommand(QStringList args);

}  // namespace quorvelle
