#pragma once

#include <QJsonArray>
#include <QJsonObject>
#include <QString>

namespace quorvelle {

/// What a server told of a channel's launch targets.
struct AdminTargets {
    QJsonArray targets = {};
    /// Why there is no telling them, for people; else empty.
    QString failure = {};
};

/// The launch targets that the server holds for a subscription's channel, asked for with
/// the subscription's token, else that of its server's entry in the configuration
/// `document`, else the default one. A server that has not answered within 15 s is given up.
/// Prints nothing. Blocks; main thread only.
AdminTargets fetchAdminTargets(const QJsonObject& document, const QJsonObject& subscription);

}  // namespace quorvelle
