#include "config/config_document.h"

#include <QDir>

#include "config/server_url.h"
#include "config/subscription.h"

namespace quorvelle::config {

namespace {

constexpr int kSchemaVersion = 2;
constexpr int kLegacyIntervalSeconds = 60;

qsizetype indexWhere(const QJsonArray& entries, const QString& key, const QString& value) {
    for (qsizetype i = 0; i < entries.size(); ++i) {
        const QJsonValue found = entries.at(i).toObject().value(key);
        if (found.isString() && found.toString() == value) {
            return i;
        }
    }
    return -1;
}

QJsonArray servers(const QJsonObject& object) {
    return object.value(u"servers").toArray();
}

/// Applies a change to every subscription of exactly that server; how many there are.
template <typename Change>
int changeSubscriptionsOf(const QString& url, QJsonObject& object, const Change& change) {
    QJsonArray entries = subscriptions(object);
    int changed = 0;
    for (QJsonValueRef reference : entries) {
        QJsonObject entry = reference.toObject();
        if (entry.value(u"server").toString() == url) {
            change(entry);
            reference = entry;
            ++changed;
        }
    }
    if (changed > 0) {
        object.insert(QStringLiteral("subscriptions"), entries);
    }
    return changed;
}

}  // namespace

QJsonObject migrated(const QJsonObject& object) {
    if (object.value(u"schema_version").toInt(1) >= kSchemaVersion) {
        return object;
    }
    const QString server = object.value(u"server").toString();
    const QString channel = object.value(u"channel").toString();
    const QString directory = object.value(u"download-dir").toString();
    const QString token = object.value(u"token").toString();

    QJsonObject result{{QStringLiteral("schema_version"), kSchemaVersion}};
    if (!server.isEmpty()) {
        result.insert(QStringLiteral("server"), server);
    }
    if (!token.isEmpty()) {
        result.insert(QStringLiteral("token"), token);
    }
    if (!server.isEmpty() && !channel.isEmpty() && !directory.isEmpty()) {
        const QJsonObject subscription{{QStringLiteral("name"), channel},
                                       {QStringLiteral("server"), server},
                                       {QStringLiteral("channel"), channel},
                                       {QStringLiteral("dir"), directory},
                                       {QStringLiteral("interval_seconds"), kLegacyIntervalSeconds},
                                       {QStringLiteral("token"), token}};
        result.insert(QStringLiteral("subscriptions"), QJsonArray{subscription});
    }
    return result;
}

QJsonArray subscriptions(const QJsonObject& object) {
    return object.value(u"subscriptions").toArray();
}

qsizetype indexOfSubscription(const QJsonArray& subscriptions, const QString& name) {
    return indexWhere(subscriptions, QStringLiteral("name"), name);
}

QJsonObject findServer(const QJsonObject& object, const QString& url) {
    const QJsonArray entries = servers(object);
    const qsizetype at = indexWhere(entries, QStringLiteral("server"), url);
    return at < 0 ? QJsonObject() : entries.at(at).toObject();
}

QString storedServerUrl(const QJsonObject& object, const QString& url) {
    if (!findServer(object, url).isEmpty()) {
        return url;
    }
    const QString trimmed = withoutTrailingSlashes(url);
    for (const QJsonValue& entry : servers(object)) {
        const QString stored = entry[u"server"].toString();
        if (withoutTrailingSlashes(stored) == trimmed) {
            return stored;
        }
    }
    return trimmed;
}

void upsertServer(QJsonObject& object, const QString& url, const QString& token,
                  const QString& installRoot) {
    QJsonArray entries = servers(object);
    QJsonObject entry = findServer(object, url);
    entry.insert(QStringLiteral("server"), url);
    entry.insert(QStringLiteral("token"), token);
    entry.insert(QStringLiteral("install_root"), installRoot);
    const qsizetype at = indexWhere(entries, QStringLiteral("server"), url);
    if (at < 0) {
        entries.append(entry);
    } else {
        entries.replace(at, entry);
    }
    object.insert(QStringLiteral("servers"), entries);
}

void setSubscriptionTokens(QJsonObject& object, const QString& url, const QString& token,
                           const std::optional<QString>& insteadOf) {
    changeSubscriptionsOf(url, object, [&](QJsonObject& entry) {
        if (!insteadOf || entry.value(u"token").toString() == *insteadOf) {
            entry.insert(QStringLiteral("token"), token);
        }
    });
}

int repointServer(QJsonObject& object, const QString& url, const QString& newRoot) {
    upsertServer(object, url, findServer(object, url).value(u"token").toString(), newRoot);
    const QString root = newRoot.endsWith(u'/') ? newRoot : newRoot + u'/';
    return changeSubscriptionsOf(url, object, [&root](QJsonObject& entry) {
        entry.insert(QStringLiteral("dir"), root + entry.value(u"channel").toString());
    });
}

QString installRootFor(const QJsonObject& object, const QString& url, const QString& explicitRoot) {
    QString root = explicitRoot;
    if (root.isEmpty()) {
        root = findServer(object, url).value(u"install_root").toString();
    }
    if (root.isEmpty()) {
        root = QDir::home().filePath(QStringLiteral("Quorvelle-Builds"));
    }
    return absolutePath(root);
}

}  // namespace quorvelle::config
