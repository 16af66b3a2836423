#include "launch/process.h"

#include <QFileInfo>
#include <QProcess>

#include "launch/signal_relay.h"

namespace quorvelle {

namespace {

constexpr int kStartLimitMs = 10000;

/// Why the process did not start.
ProcessResult notStarted(const QProcess& process) {
    const QString directory = process.workingDirectory();
    return {.reason = QFileInfo(directory).isDir()
                          ? process.errorString()
                          : QStringLiteral("no directory %1").arg(directory)};
}

}  // namespace

ProcessResult startDetached(const ProcessStart& start) {
    QProcess process;
    configureDetached(process, start);
    process.setStandardInputFile(QProcess::nullDevice());
    process.setStandardOutputFile(QProcess::nullDevice());
    process.setStandardErrorFile(QProcess::nullDevice());
    qint64 id = 0;
    return process.startDetached(&id) ? ProcessResult{.value = id} : notStarted(process);
}

ProcessResult startAndWait(const ProcessStart& start) {
    SignalRelay relay;
    QProcess process;
    configure(process, start);
    process.setProcessChannelMode(QProcess::ForwardedChannels);
    process.setInputChannelMode(QProcess::ForwardedInputChannel);
    process.start();
    if (!process.waitForStarted(kStartLimitMs)) {
        return notStarted(process);
    }
    relay.handOnTo(process.processId());
    process.waitForFinished(-1);
    return process.exitStatus() == QProcess::NormalExit
               ? ProcessResult{.value = process.exitCode()}
               : ProcessResult{.reason = crashText(process)};
}

}  // namespace quorvelle
