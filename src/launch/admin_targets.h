#pragma once

#include <QJsonArray>
#include <QJsonObject>

namespace quorvelle {

/// The launch targets that the server holds for a subscription's channel, asked for with
/// the subscription's token, else that of its server's entry in the configuration
/// `document`, else the default one. Empty, without a word, when the server refuses or has
/// not answered within 5 s. Blocks; main thread only.
QJsonArray fetchAdminTargets(const QJsonObject& document, const QJsonObject& subscription);

}  // namespace quorvelle
