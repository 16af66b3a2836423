#pragma once

#include <QJsonObject>
#include <QString>
#include <QStringList>
#include <optional>

#include "server/server.h"

/// Which server a command talks to, and with which token.

namespace quorvelle {

/// Takes "--server", else the configured default server, and returns it as typed. An empty
/// value counts as none. Without either, prints that no server is configured, or the usage
/// where slashes are all that was typed, and returns an empty string; the handler then
/// returns kExitUsage.
QString takeServerOption(QStringList& args);

/// The server of a URL as typed, with the token of tokenFor().
Server selectServer(const QString& typed);

/// Both steps, as most handlers begin; nothing after the message was printed.
std::optional<Server> resolveServer(QStringList& args);

/// The token for requests to a server; first non-empty wins: that of the "servers" entry
/// of exactly this URL, QUORVELLE_TOKEN, the configuration's top-level token. May be empty.
QString tokenFor(const QJsonObject& document, const QString& url);

/// The token used where no server entry has one: QUORVELLE_TOKEN, else the
/// configuration's top-level token.
QString resolveToken(const QJsonObject& document);
QString resolveToken();

}  // namespace quorvelle
