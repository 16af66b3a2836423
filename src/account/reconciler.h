#pragma once

#include <QJsonObject>
#include <QNetworkAccessManager>
#include <QObject>
#include <QString>
#include <QStringList>

namespace quorvelle {

class HttpExchange;

/// Brings the subscriptions of one server in line with its assignments: asks the server
/// for them and saves the configuration when they call for a change. One run per object,
/// on one thread.
class Reconciler : public QObject {
    Q_OBJECT

public:
    using QObject::QObject;

    /// Begins with a "servers" entry of the configuration and returns at once. The request
    /// carries the entry's own token or none, never that of another server.
    void start(const QJsonObject& serverEntry);

Q_SIGNALS:
    /// Emitted once. `errors` holds one line per failure, none when `ok`; `changes` are the
    /// lines of what was changed and saved, also where some channels failed.
    void finished(bool ok, const QStringList& errors, const QStringList& changes);

private:
    void onReply(const HttpExchange& exchange);
    void apply(const QStringList& assigned);
    void fail(const QString& reason);
    QString server() const;

    QNetworkAccessManager network;
    QJsonObject entry;
};

}  // namespace quorvelle
