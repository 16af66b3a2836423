#pragma once

#include <QStringList>

/// The commands that create, list, change and remove subscriptions. They never talk to
/// a server and never touch installed files.

namespace quorvelle {

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

}  // namespace quorvelle
