#pragma once

#include <QJsonObject>
#include <QString>
#include <optional>

namespace quorvelle {

/// Asks the licensing service for a trial license in the licensee's name and returns it
/// as the service spelled it. Nothing when it gave none; the reason has been printed.
///
/// The service is the built-in one or the one that QUORVELLE_TRIAL_URL and
/// QUORVELLE_TRIAL_TOKEN name.
std::optional<QJsonObject> requestTrialLicense(const QString& licensee);

}  // namespace quorvelle
