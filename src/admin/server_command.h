#pragma once

#include <QString>
#include <QStringList>
#include <functional>
#include <optional>

#include "server/requests.h"

/// The shape that the administration commands share: find the server, take the
/// options, check the positionals, ask the server, say what came of it.

namespace quorvelle {

/// A command's work once its server is known. `args` still holds the options and
/// positionals; the result is the exit code.
using ServerWork = std::function<int(const QString& server, QStringList& args)>;

/// Resolves the server (none: the message is printed, kExitUsage) and does the work.
int onServer(QStringList args, const ServerWork& work);

/// The same for a command without options: another count of positionals than
/// `positionals` prints the usage instead.
int onServer(QStringList args, qsizetype positionals, const ServerWork& work);

/// Takes an option (takeOption) that may be absent or may be given an empty value, which
/// are not the same: nothing, or the value.
std::optional<QString> takeGiven(QStringList& args, const QString& name);

/// Appends the query item when there is a value for it.
void addGiven(QueryItems& query, const QString& key, const std::optional<QString>& value);

/// Ends a command with its last request: prints the reply's object in JSON mode, else
/// the text, which ends with its own line end. A failed request has printed its
/// message, and the text is not used.
int finish(const Reply& reply, const QString& text);

/// The names of a JSON array joined with ", "; an empty string when there are none.
QString joinedNames(const QJsonValue& names);

/// The same for a labelled place: "(none)" when there are no names.
QString namesOrNone(const QJsonValue& names);

/// A JSON number as a whole decimal number, up to 64 bits; "0" when it is none.
QString wholeNumber(const QJsonValue& value);

/// The id of a thing, which servers give as a string or as a number; "" when it is neither.
QString idText(const QJsonValue& value);

/// The text of a listing: `none` for an empty array, else the heading and the line of
/// each object. None of the parts carries a line end.
QString listing(const QString& none, const QString& heading, const QJsonValue& objects,
                const std::function<QString(const QJsonObject&)>& line);

}  // namespace quorvelle
