#pragma once

#include <QJsonObject>
#include <QString>
#include <optional>

/// How a subscription's settings are typed, stored and shown. Both settings are
/// stored as integers; an absent key reads as -1, the default.

namespace quorvelle {

/// What a sync does with an install that is current, by the numbers that are stored.
enum class SelfHeal : int {
    kDefault = -1,  ///< what the syncer does by itself
    kNone = 0,      ///< does not look at the files
    kQuick = 1,     ///< looks for missing files and wrong sizes
    kFull = 2,      ///< compares every byte
};

/// Parses an auto-sync interval: "manual", "off" or "0" give 0, "default" gives -1,
/// a decimal number from 1 to 2147483647 gives the seconds; blanks around it and
/// letter case do not matter. Nothing for any other text.
std::optional<int> parseInterval(const QString& text);

/// The mode of a stored subscription; a number without a meaning is the default.
SelfHeal selfHealOf(const QJsonObject& subscription);

/// Parses a self-heal mode ("none", "quick", "full", "default") to the number to store.
std::optional<int> parseSelfHeal(const QString& text);

/// The words for a stored interval, such as "every 60s".
QString intervalText(qint64 seconds);

/// The words for a stored self-heal mode; a number without a meaning is "default".
QString selfHealText(int mode);

/// The line that lists a subscription, without line end and indentation.
QString subscriptionLine(const QJsonObject& subscription);

/// A path that a person typed as the absolute, cleaned path to store.
QString absolutePath(const QString& path);

}  // namespace quorvelle
