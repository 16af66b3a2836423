#pragma once

#include <QJsonArray>
#include <QJsonObject>
#include <QString>
#include <optional>

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

/// The document as version 2: one of version 2 or later comes back as it is, an
/// older one is rebuilt, its single channel becoming a subscription.
QJsonObject migrated(const QJsonObject& object);

/// The "subscriptions" array, empty when absent.
QJsonArray subscriptions(const QJsonObject& object);

/// Where the subscription of that name stands in the array, or -1.
qsizetype indexOfSubscription(const QJsonArray& subscriptions, const QString& name);

/// The "servers" entry whose "server" equals `url` exactly, or an empty object.
QJsonObject findServer(const QJsonObject& object, const QString& url);

/// The URL under which a server that a person typed is stored: an entry of exactly
/// that URL, else an entry that differs by trailing slashes only, else the URL
/// without trailing slashes.
QString storedServerUrl(const QJsonObject& object, const QString& url);

/// Sets "token" and "install_root" of the server's entry, which is appended when
/// there is none. Other keys of the entry stay.
void upsertServer(QJsonObject& object, const QString& url, const QString& token,
                  const QString& installRoot);

/// Sets "token" of every subscription of exactly that server; with `insteadOf`, only of
/// those that carry that one.
void setSubscriptionTokens(QJsonObject& object, const QString& url, const QString& token,
                           const std::optional<QString>& insteadOf = {});

/// Moves a server to a new install root: upserts its entry and sets "dir" of every
/// subscription of exactly that server to the root joined with the channel as one
/// path element. Nothing on disk is touched. Returns the number of subscriptions
/// changed.
int repointServer(QJsonObject& object, const QString& url, const QString& newRoot);

/// The absolute folder under which a server's subscriptions are placed: the
/// explicit root, else the entry's, else "Quorvelle-Builds" in the home folder.
QString installRootFor(const QJsonObject& object, const QString& url, const QString& explicitRoot);

}  // namespace quorvelle::config
