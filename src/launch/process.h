#pragma once

#include <QString>
#include <optional>

#include "launch/launch_spec.h"

class QProcess;

/// The start of a process: what of launching touches the system. Main thread only.

namespace quorvelle {

/// What came of a process: a number, or the reason why there is none, for people.
struct ProcessResult {
    std::optional<qint64> value = {};
    QString reason = {};
};

/// Starts a process that lives on by itself, reads nothing and writes nowhere, so that
/// whoever reads this program's output need not wait for it; on Windows it also has no part
/// in this console. The value is its process id; there is none when it could not be executed
/// or its working directory could not be entered.
ProcessResult startDetached(const ProcessStart& start);

/// Starts a process with this one's standard streams and waits for its end, however long
/// that takes; meanwhile a SignalRelay stands. The value is its exit code; there is none when
/// it did not start within 10 s or crashed.
ProcessResult startAndWait(const ProcessStart& start);

/// The rest is the platform's part.

/// Why the process cannot be started as it is asked for, or an empty text.
QString refusalOf(const ProcessStart& start);

/// Fills in everything but the streams.
void configure(QProcess& process, const ProcessStart& start);

/// The same for a process that is started detached.
void configureDetached(QProcess& process, const ProcessStart& start);

/// How a process ended that gave no exit code.
QString crashText(const QProcess& process);

/// Gives the file the permission to be executed by its owner, where there is such a thing
/// and it is missing. A failure shows when the file is started.
void makeExecutable(const QString& file);

}  // namespace quorvelle
