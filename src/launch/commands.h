#pragma once

#include <QStringList>

namespace quorvelle {

/// run <subscription> [--target <label>] [--wait] [-- <extra args>]: starts a launch target
/// of an installed build, detached, or with --wait to its end, returning its exit code.
/// A server that does not answer is passed over, of which a terminal is told; the user's own
/// targets are then all there is.
int runCommand(QStringList args);

}  // namespace quorvelle
