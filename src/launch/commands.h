#pragma once

#include <QStringList>

namespace quorvelle {

/// Says whether an installed build stands in a directory.
using IsInstalled = bool (*)(const QString& dir);

/// run <subscription> [--target <label>] [--wait] [-- <extra args>]: starts a launch target
/// of an installed build, detached, or with --wait to its end, returning its exit code.
/// A server that does not answer is passed over, of which a terminal is told; the user's own
/// targets are then all there is.
int runTargetCommand(QStringList args, IsInstalled isInstalled);

}  // namespace quorvelle
