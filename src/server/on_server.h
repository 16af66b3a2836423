#pragma once

#include <QString>
#include <QStringList>
#include <functional>

#include "console/shown_text.h"
#include "server/requests.h"

/// The shape that commands which talk to a server share: find the server, take the
/// options, check the positionals, ask the server, say what came of it.

namespace quorvelle {

/// A command's work once its server is known. `args` still holds the options and
/// positionals; the result is the exit code.
using ServerWork = std::function<int(const Server& server, QStringList& args)>;

/// Resolves the server (none: the message is printed, kExitUsage) and does the work.
int onServer(QStringList args, const ServerWork& work);

/// The same for a command without options, whose positionals are names or ids: another
/// count of them than `positionals`, or an empty one, prints the usage instead.
int onServer(QStringList args, qsizetype positionals, const ServerWork& work);

/// The same for a command that lists something and ignores surplus words. What looks like an
/// option is none: the default server must not answer where a misspelt option names another.
int listOnServer(QStringList args, const ServerWork& work);

/// Ends a command with its last request: prints the reply's object in JSON mode, else
/// the text. A failed request has printed its message, and the text is not used.
int finish(const Reply& reply, const QString& line);
int finish(const Reply& reply, const Lines& lines);

}  // namespace quorvelle
