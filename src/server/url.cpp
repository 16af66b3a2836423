#include "server/url.h"

#include <QStringList>

#include "config/server_url.h"

namespace quorvelle {

namespace {

QString encoded(const QString& text) {
    return QString::fromLatin1(QUrl::toPercentEncoding(text));
}

}  // namespace

void addGiven(QueryItems& query, const QString& key, const std::optional<QString>& value) {
    if (value) {
        query.append({key, *value});
    }
}

QString apiPath(const QString& pattern, const QString& name) {
    return pattern.arg(encoded(name));
}

QUrl apiUrl(const QString& server, const QString& path, const QueryItems& query) {
    QUrl url(withoutTrailingSlashes(server) + path);
    QStringList items;
    for (const auto& [key, value] : query) {
        items.append(encoded(key) + u'=' + encoded(value));
    }
    if (!items.isEmpty()) {
        url.setQuery(items.join(u'&'), QUrl::StrictMode);
    }
    return url;
}

}  // namespace quorvelle
