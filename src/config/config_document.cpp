#include "config/config_document.h"

#include <QDir>

#include "config/install_folders.h"
#include "config/json_number.h"
#include "config/server_url.h"
#include "config/subscription.h"
#include "files/home_folder.h"

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

/// Where the server's entry stands, looked up as serverEntry() says; -1 without one.
qsizetype indexOfServer(const QJsonArray& entries, const QString& url) {
    const qsizetype exact = indexWhere(entries, QStringLiteral("server"), url);
    for (qsizetype i = 0; exact < 0 && i < entries.size(); ++i) {
        const QJsonValue stored = entries.at(i)[u"server"];
        if (stored.isString() && isSameServer(stored.toString(), url)) {
            return i;
        }
    }
    return exact;
}

bool isCurrent(const QJsonObject& object) {
    return numberIn(object.value(u"schema_version")).value_or(1) >= kSchemaVersion;
}

/// Applies a change to every subscription of the server.
template <typename Change>
void changeSubscriptionsOf(const QString& url, QJsonObject& object, const Change& change) {
    QJsonArray entries = subscriptions(object);
    for (QJsonValueRef reference : entries) {
        QJsonObject entry = reference.toObject();
        if (isOnServer(object, entry, url)) {
            change(entry);
            reference = entry;
        }
    }
    if (!entries.isEmpty()) {
        object.insert(QStringLiteral("subscriptions"), entries);
    }
}

}  // namespace

QJsonObject migrated(const QJsonObject& object) {
    if (isCurrent(object)) {
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

bool losesInMigration(const QJsonObject& object) {
    return !isCurrent(object) && (object.contains(u"servers") || object.contains(u"subscriptions"));
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

QJsonObject serverEntry(const QJsonObject& object, const QString& url) {
    const QJsonArray entries = servers(object);
    const qsizetype at = indexOfServer(entries, url);
    return at < 0 ? QJsonObject() : entries.at(at).toObject();
}

QString storedServerUrl(const QJsonObject& object, const QString& url) {
    const QJsonObject entry = serverEntry(object, url);
    return entry.isEmpty() ? withoutTrailingSlashes(url) : entry.value(u"server").toString();
}

bool isOnServer(const QJsonObject& object, const QJsonObject& subscription, const QString& url) {
    const QString own = subscription.value(u"server").toString();
    return own == url || storedServerUrl(object, own) == storedServerUrl(object, url);
}

void upsertServer(QJsonObject& object, const QString& url, const QString& token,
                  const QString& installRoot) {
    QJsonArray entries = servers(object);
    QJsonObject entry = serverEntry(object, url);
    entry.insert(QStringLiteral("server"), url);
    entry.insert(QStringLiteral("token"), token);
    entry.insert(QStringLiteral("install_root"), installRoot);
    const qsizetype at = indexOfServer(entries, url);
    if (at < 0) {
        entries.append(entry);
    } else {
        entries.replace(at, entry);
    }
    object.insert(QStringLiteral("servers"), entries);
}

void setSubscriptionTokens(QJsonObject& object, const QString& url, const QString& token,
                           Whose whose) {
    changeSubscriptionsOf(url, object, [&](QJsonObject& entry) {
        if (whose == Whose::kAll || entry.value(u"managed").toBool()) {
            entry.insert(QStringLiteral("token"), token);
        }
    });
}

QStringList subscriptionsWithToken(const QJsonObject& object, const QString& url,
                                   const QString& token) {
    QStringList names;
    for (const QJsonValue& value : subscriptions(object)) {
        const QJsonObject entry = value.toObject();
        if (isOnServer(object, entry, url) && entry.value(u"token").toString() == token) {
            names.append(entry.value(u"name").toString());
        }
    }
    return names;
}

Repointed repointServer(QJsonObject& object, const QString& url, const QString& newRoot) {
    QStringList taken;
    for (const QJsonValue& other : subscriptions(object)) {
        if (!isOnServer(object, other.toObject(), url)) {
            taken.append(other[u"dir"].toString());
        }
    }
    Repointed result;
    upsertServer(object, url, serverEntry(object, url).value(u"token").toString(), newRoot);
    changeSubscriptionsOf(url, object, [&](QJsonObject& entry) {
        const QString channel = entry.value(u"channel").toString();
        if (const auto folder = freeFolder(newRoot, channel, taken)) {
            entry.insert(QStringLiteral("dir"), *folder);
            ++result.subscriptions;
        } else {
            result.refused.append(noFreeFolder(url, channel, newRoot));
        }
        taken.append(entry.value(u"dir").toString());
    });
    return result;
}

QString installRootFor(const QJsonObject& object, const QString& url, const QString& explicitRoot) {
    QString root = explicitRoot;
    if (root.isEmpty()) {
        root = serverEntry(object, url).value(u"install_root").toString();
    }
    if (root.isEmpty() && findHomeFolder()) {
        root = QDir::home().filePath(QStringLiteral("Quorvelle-Builds"));
    }
    return root.isEmpty() ? root : absolutePath(root);
}

}  // namespace quorvelle::config
