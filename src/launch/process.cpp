#include "launch/process.h"

#include <QProcess>

namespace quorvelle {

namespace {

constexpr int kStartLimitMs = 10000;

}  // namespace

std::optional<qint64> startDetached(const ProcessStart& start) {
    QProcess process;
    configure(process, start);
    process.setStandardInputFile(QProcess::nullDevice());
    process.setStandardOutputFile(QProcess::nullDevice());
    process.setStandardErrorFile(QProcess::nullDevice());
    qint64 id = 0;
    return process.startDetached(&id) ? std::optional(id) : std::nullopt;
}

int startAndWait(const ProcessStart& start) {
    QProcess process;
    configure(process, start);
    process.setProcessChannelMode(QProcess::ForwardedChannels);
    process.setInputChannelMode(QProcess::ForwardedInputChannel);
    process.start();
    if (!process.waitForStarted(kStartLimitMs)) {
        return kNoExitCode;
    }
    process.waitForFinished(-1);
    return process.exitStatus() == QProcess::NormalExit ? process.exitCode() : kNoExitCode;
}

}  // namespace quorvelle
