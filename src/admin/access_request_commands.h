#pragma once

#include <QStringList>

/// Asking a server's administrators for an invite, and answering such requests. Handlers
/// as the command table wants them.

namespace quorvelle {

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

}  // namespace quorvelle
