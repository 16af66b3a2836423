#pragma once

#include <QMap>
#include <QString>
#include <QStringList>
#include <optional>
#include <string>

namespace quorvelle::devserver {

/// A request target taken apart: the path's segments and the query's items,
/// each percent-decoded only after the split, so that a name may hold any
/// character, "/" included.
struct Target {
    QStringList segments;
    QMap<QString, QString> query;
};

/// Takes a raw request target apart. A "+" in the query stays a "+". Nothing
/// when a part is not UTF-8 once decoded.
std::optional<Target> parseTarget(const std::string& raw);

}  // namespace quorvelle::devserver
