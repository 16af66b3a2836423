#pragma once

#include <QList>
#include <QPair>
#include <QString>
#include <QUrl>
#include <optional>

namespace quorvelle {

/// Query items in the order in which they are sent.
using QueryItems = QList<QPair<QString, QString>>;

/// Appends the query item when there is a value for it.
void addGiven(QueryItems& query, const QString& key, const std::optional<QString>& value);

/// Fills "%1" of a path such as "/api/builds/%1" with a name, encoded as exactly
/// one path segment: "/", "?", "#" and "%" of the name cannot change the path.
QString apiPath(const QString& pattern, const QString& name);

/// The URL of a request: the server's base URL without trailing slashes, the
/// (already encoded) path, and the query with each value percent-encoded.
QUrl apiUrl(const QString& server, const QString& path, const QueryItems& query = {});

}  // namespace quorvelle
