#pragma once

#include <QString>
#include <QStringList>
#include <functional>

#include "server/server.h"
#include "server/url.h"

/// What making an invite and approving an access request, which makes one, have in common.

namespace quorvelle {

/// The key of a reply that holds an invite's code, which is told only once.
inline const QString kInviteCode = QStringLiteral("code");

/// Makes the invite of a positional (a user, a request) with the query items of its terms;
/// returns the exit code.
using MakeInvite =
    std::function<int(const Server& server, const QString& subject, QueryItems terms)>;

/// Runs a command that makes an invite: takes "--groups" and "--days" and checks them. The
/// query items are those that were given.
int runInviteCommand(QStringList args, const MakeInvite& make);

/// The command with which an invited person joins from a terminal.
QString joinCommandLine(const QString& server, const QString& code);

}  // namespace quorvelle
