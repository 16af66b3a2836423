#pragma once

#include <QJsonArray>
#include <QJsonObject>
#include <QStringList>

namespace quorvelle {

/// sync [--name <subscription> | --server <url>] [--force]: brings subscriptions to
/// their channels' builds, one after another; returns the largest of their codes.
int syncCommand(QStringList args);

/// Runs one subscription's sync to its end, showing its lines in text mode. Appends
/// {"name", "result", "message" [, "build"]} to `results` when given. Returns
/// kExitSuccess, kExitBlocked or kExitFailed.
int syncSubscription(const QJsonObject& subscription, QJsonArray* results, bool force);

}  // namespace quorvelle
