#pragma once

#include <QJsonObject>
#include <QString>

/// How the values of a server's reply are written in a line.

namespace quorvelle {

/// The names of a JSON array joined with ", "; an empty string when there are none.
QString joinedNames(const QJsonValue& names);

/// The same for a labelled place: "(none)" when there are no names.
QString namesOrNone(const QJsonValue& names);

/// A JSON number as a whole decimal number, up to 64 bits; "0" when it is none.
QString wholeNumber(const QJsonValue& value);

/// The id of a thing, which servers give as a string or as a number; "" when it is neither.
QString idText(const QJsonValue& value);

}  // namespace quorvelle
