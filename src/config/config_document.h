#pragma once

#include <QJsonArray>
#include <QJsonObject>
#include <QString>
#include <QStringList>

/// The configuration as a document: pure functions on the JSON object that
/// config_file.h reads and writes. Schema version 2:
///
///   "schema_version"  2
///   "server"          default server base URL
///   "token"           default bearer token
///   "servers"         [{"server", "token", "install_root"}], one per server URL
///   "subscriptions"   [{"name", "server", "channel", "dir", "interval_seconds",
///                       "self_heal", "token", "managed"}]
///
/// Keys that this version does not know are kept by every change.

namespace quorvelle::config {

/// The document as version 2: one whose "schema_version" is a number of 2 or more, also one
/// sent as text, comes back as it is, an older one is rebuilt, its single channel becoming
/// a subscription.
QJsonObject migrated(const QJsonObject& object);

/// Whether the migration of the document drops joined servers or subscriptions, which its
/// version did not have.
bool losesInMigration(const QJsonObject& object);

/// The "subscriptions" array, empty when absent.
QJsonArray subscriptions(const QJsonObject& object);

/// Where the subscription of that name stands in the array, or -1.
qsizetype indexOfSubscription(const QJsonArray& subscriptions, const QString& name);

/// The "servers" entry whose "server" equals `url` exactly, or an empty object: the one
/// whose token requests to that URL carry. Everything else is looked up by serverEntry().
QJsonObject findServer(const QJsonObject& object, const QString& url);

/// The entry of a server: the one of exactly that URL, else the first that differs by
/// trailing slashes only, else an empty object.
QJsonObject serverEntry(const QJsonObject& object, const QString& url);

/// The URL under which a server that a person typed is stored: that of its entry, else the
/// URL without trailing slashes.
QString storedServerUrl(const QJsonObject& object, const QString& url);

/// Whether a subscription belongs to the server of that URL: its own is the same, or is
/// stored under the same entry.
bool isOnServer(const QJsonObject& object, const QJsonObject& subscription, const QString& url);

/// Sets "token" and "install_root" of the server's entry, and `url` as its "server"; the
/// entry is appended when there is none. Its other keys stay.
void upsertServer(QJsonObject& object, const QString& url, const QString& token,
                  const QString& installRoot);

/// Whose token setSubscriptionTokens() changes.
enum class Whose { kAll, kManaged };

/// Sets "token" of the subscriptions of a server.
void setSubscriptionTokens(QJsonObject& object, const QString& url, const QString& token,
                           Whose whose);

/// The names of a server's subscriptions that carry the token, in list order.
QStringList subscriptionsWithToken(const QJsonObject& object, const QString& url,
                                   const QString& token);

/// What repointServer() came to.
struct Repointed {
    int subscriptions = 0;
    /// One error text per subscription that keeps its folder because none is free.
    QStringList refused = {};
};

/// Moves a server to a new install root: upserts its entry and sets "dir" of each of its
/// subscriptions to the folder for its channel below the root, in list order, so that no
/// two folders meet (install_folders.h). Nothing on disk is touched.
Repointed repointServer(QJsonObject& object, const QString& url, const QString& newRoot);

/// The absolute folder under which a server's subscriptions are placed: the explicit root,
/// else the entry's, else "Quorvelle-Builds" in the home folder. Empty when it is the last
/// and the home folder is not known.
QString installRootFor(const QJsonObject& object, const QString& url, const QString& explicitRoot);

}  // namespace quorvelle::config
