#pragma once

#include <QString>
#include <optional>

#include "launch/launch_spec.h"

class QProcess;

/// The start of a process: what of launching touches the system. Main thread only.

namespace quorvelle {

/// What startAndWait() returns for a process that gave no exit code.
inline constexpr int kNoExitCode = -1;

/// Starts a process that lives on by itself, reads nothing and writes nowhere, so that
/// whoever reads this program's output need not wait for it. Its process id, or nothing
/// when it could not be executed or its working directory could not be entered.
std::optional<qint64> startDetached(const ProcessStart& start);

/// Starts a process with this one's standard streams and waits for its end, however long
/// that takes. Its exit code, or kNoExitCode when it did not start within 10 s or crashed.
int startAndWait(const ProcessStart& start);

/// Fills in everything but the streams; the platform's part of both.
void configure(QProcess& process, const ProcessStart& start);

}  // namespace quorvelle
