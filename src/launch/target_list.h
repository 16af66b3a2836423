#pragma once

#include <QJsonArray>
#include <QJsonObject>
#include <QString>
#include <optional>

/// A channel's list of launch targets, as the server keeps it and its administrators edit
/// it. Pure functions: each takes a list and returns the changed one. Keys and entries that
/// this version does not know are kept, and so are the places in the list.

namespace quorvelle {

/// The list's key in a channel.
inline const QString kTargetsKey = QStringLiteral("launch_targets");

/// The list in a channel as a server describes it, empty where it has none; nothing when
/// something else stands in its place.
std::optional<QJsonArray> targetsOf(const QJsonObject& channel);

/// Where the first target of that label stands, or -1.
qsizetype indexOfTarget(const QJsonArray& targets, const QString& label);

/// Sets "exe" and "args" of the target of that label; without one appends a target that is
/// not primary.
QJsonArray withTarget(QJsonArray targets, const QString& label, const QString& exe,
                      const QString& args);

/// Makes the target at that place the only primary one; -1 leaves none.
QJsonArray withOnlyPrimary(QJsonArray targets, qsizetype index);

/// Removes every target of that label.
QJsonArray withoutTarget(QJsonArray targets, const QString& label);

/// The list for people, one line per target: label, executable, arguments, "[primary]".
QStringList targetLines(const QJsonArray& targets);

}  // namespace quorvelle
