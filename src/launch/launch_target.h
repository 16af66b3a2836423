#pragma once

#include <QJsonArray>
#include <QJsonObject>
#include <QString>
#include <QStringList>

/// Launch targets: which file of an installed build is started, and how. Pure functions.
///
/// A target is a JSON object: "label", "exe" and "working_dir" (relative to the install
/// directory), "args" (one command line), "primary". Administrators define targets on a
/// channel; users add their own to a subscription ("launch_targets") and adjust those of
/// the administrator without changing them ("admin_overrides").

namespace quorvelle {

/// The key of an administrator's target in "admin_overrides": label, U+001F, exe. An
/// adjustment thus survives edits of the arguments, not of the label or the executable.
QString adminTargetKey(const QJsonObject& target);

/// The targets that a subscription offers: the administrator's in their order, each as
/// "source" "admin", "akey", "label", "exe", "working_dir", "admin_args", "pre_args",
/// "post_args", "ignore_server", "favorite", "primary" and nothing else, so that it cannot
/// allow itself to leave the install directory; then the user's, unchanged but for
/// "source" "user" and "uindex", the place in the user's array.
QJsonArray mergedTargets(const QJsonArray& adminTargets, const QJsonObject& subscription);

/// A target, or why there is none to start: `error` is then not empty.
struct Selection {
    QJsonObject target = {};
    QString error = {};
};

/// Picks from merged targets: the first with that label; without a label the first primary
/// one, else the only one.
Selection selectTarget(const QJsonArray& targets, const QString& subscription,
                       const QString& label);

/// A merged target's own arguments: the user's before the administrator's (or the user
/// target's "args"), the administrator's unless "ignore_server", the user's after them.
/// Each is split by QProcess::splitCommand: blanks separate, double quotes group, three
/// double quotes stand for one.
QStringList targetArguments(const QJsonObject& target);

}  // namespace quorvelle
