#pragma once

#include <QJsonObject>
#include <QString>
#include <optional>

/// How a subscription's settings are typed, stored and shown. Both settings are
/// stored as integers; an absent key reads as -1, the default.

namespace quorvelle {

/// Parses an auto-sync interval: "manual", "off" or "0" give 0, "default" gives -1,
/// a decimal number from 1 to 2147483647 gives the seconds; blanks around it and
/// letter case do not matter. Nothing for any other text.
std::optional<int> parseInterval(const QString& text);

/// Parses a self-heal mode: "none" 0, "quick" 1, "full" 2, "default" -1.
std::optional<int> parseSelfHeal(const QString& text);

/// The words for a stored interval, such as "every 60s".
QString intervalText(int seconds);

/// The words for a stored self-heal mode; a number without a meaning is "default".
QString selfHealText(int mode);

/// The line that lists a subscription, with its line end and without indentation.
QString subscriptionLine(const QJsonObject& subscription);

/// A path that a person typed as the absolute, cleaned path to store.
QString absolutePath(const QString& path);

}  // namespace quorvelle
