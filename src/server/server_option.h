#pragma once

#include <QString>
#include <QStringList>

/// Which server a command talks to, and with which token.

namespace quorvelle {

/// Takes "--server", else the configured default server, and returns it as typed.
/// Without either, prints that no server is configured and returns an empty string;
/// the handler then returns kExitUsage.
QString takeServerOption(QStringList& args);

/// Makes a server the one that requests go to: returns its URL without trailing
/// slashes and makes the token of its "servers" entry the token override.
QString selectServer(const QString& typed);

/// Both steps, as most handlers begin: the URL without trailing slashes, or an
/// empty string after the message was printed.
QString resolveServer(QStringList& args);

/// The token for requests to the selected server; first non-empty wins: its entry's
/// token, QUORVELLE_TOKEN, the configuration's top-level token. May be empty.
QString requestToken();

/// The token used where no server entry has one: QUORVELLE_TOKEN, else the
/// configuration's top-level token.
QString resolveToken();

}  // namespace quorvelle
