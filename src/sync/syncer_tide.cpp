#include <QDir>
#include <QFutureWatcher>
#include <QtConcurrent/QtConcurrentRun>
#include <memory>
#include <utility>

#include "files/file_tree.h"
#include "sync/leftovers.h"
#include "sync/markers.h"
#include "sync/state_folder.h"
#include "sync/swap.h"
#include "sync/syncer.h"

namespace quorvelle {

namespace {

constexpr double kBytesPerMegabyte = 1048576.0;

}  // namespace

void Syncer::checkTideChannel() {
    Q_EMIT progress(named(QStringLiteral("checking Tide channel '%1' ...").arg(channel)));
    get(apiPath(QStringLiteral("/api/tide/sync/%1"), channel), {}, QStringLiteral("Tide sync"),
        &Syncer::onTideReply);
}

void Syncer::onTideReply(const HttpExchange& exchange) {
    tideJob.source.channel = channel.toStdString();
    tideJob.source.httpsOnly = server.startsWith(QStringLiteral("https://"), Qt::CaseInsensitive);
    tideJob.stagingDir = statePath(dir, kStagingSuffix).toStdString();
    tideJob.installDir = dir.toStdString();
    std::string error;
    const QByteArray& json = exchange.bytes();
    tide::SyncDescriptor descriptor;
    if (!tide::parseSyncDescriptor({json.constData(), static_cast<std::size_t>(json.size())},
                                   descriptor, &error)) {
        endFailed(
            named(QStringLiteral("bad Tide descriptor: %1").arg(QString::fromStdString(error))));
        return;
    }
    setBuild(QString::fromStdString(descriptor.build));
    tideJob.source.manifestUrl = std::move(descriptor.manifestUrl);
    tideJob.source.signatureUrl = std::move(descriptor.signatureUrl);
    tideJob.chunkUrls = std::make_shared<const tide::ChunkUrls>(std::move(descriptor.chunkUrls));
    const bool current =
        !force && readInstalledMarker(dir).build == buildId && directoryExists(dir);
    if (!current) {
        startTideDownload();
    } else if (selfHeal == SelfHeal::kNone) {
        endFinished(false, QStringLiteral("'%1' is up to date").arg(name));
    } else {
        startSelfHeal();
    }
}

void Syncer::startSelfHeal() {
    const bool quick = selfHeal != SelfHeal::kFull;
    Q_EMIT stepped(WorkStep::kVerifying);
    Q_EMIT progress(named(quick ? QStringLiteral("checking install ...")
                                : QStringLiteral("verifying install ...")));
    runOnWorker([job = tideJob, quick,
                 onBytes = onMainThread()] { return checkInstall(job, quick, onBytes); },
                &Syncer::onSelfHealResult);
}

void Syncer::onSelfHealResult(const TideResult& result) {
    if (result.ok) {
        endFinished(false, QStringLiteral("'%1' is up to date%2").arg(name, result.text));
        return;
    }
    Q_EMIT progress(named(result.text + QStringLiteral(" - repairing ...")));
    startTideDownload();
}

void Syncer::startTideDownload() {
    if (!canReplaceInstall()) {
        return;
    }
    if (!prepareTideStaging()) {
        endFailed(named(
            QStringLiteral("cannot create staging dir %1").arg(statePath(dir, kStagingSuffix))));
        return;
    }
    tideJob.mayLink = !keepsContent(dir);
    files = {};
    totalSize = 0;
    Q_EMIT stepped(WorkStep::kDownloading);
    Q_EMIT progress(named(QStringLiteral("downloading Tide build ...")));
    const auto onPercent = [this](int percent, qint64 bytes) {
        const QString megabytes =
            QString::number(static_cast<double>(bytes) / kBytesPerMegabyte, 'f', 1);
        const QString line = QStringLiteral("downloading Tide build %1% (%2 MB) ...")
                                 .arg(QString::number(percent), megabytes);
        QMetaObject::invokeMethod(
            this,
            [this, percent, line] {
                Q_EMIT percentLine(named(line));
                Q_EMIT progressPercent(percent);
            },
            Qt::QueuedConnection);
    };
    runOnWorker([job = tideJob, onPercent,
                 onBytes = onMainThread()] { return assembleStaging(job, onPercent, onBytes); },
                &Syncer::onTideDownloaded);
}

BytesCallback Syncer::onMainThread() {
    return [this](qint64 bytes, std::optional<qint64> total) {
        QMetaObject::invokeMethod(
            this, [this, bytes, total] { Q_EMIT moved(bytes, total); }, Qt::QueuedConnection);
    };
}

bool Syncer::prepareTideStaging() {
    const QString staging = statePath(dir, kStagingSuffix);
    // What is staged is about to change; its marker must not outlive it.
    if (!withdrawStaged(dir)) {
        return false;
    }
    const bool resumes = directoryExists(staging) && readStagingBuild(dir) == buildId;
    if (!resumes && !discardTree(dir, kStagingSuffix)) {
        return false;
    }
    if (!QDir().mkpath(staging)) {
        return false;
    }
    writeStagingBuild(dir, buildId);
    return true;
}

void Syncer::onTideDownloaded(const TideResult& result) {
    if (takeAssembled(result)) {
        activateStaged();
    }
}

/// Somebody wrote into files that staging shares with the install, which thus may hold other
/// bytes by now. They are judged once more; those in use are not shared then. Who writes again
/// and again must not hold the update up, so that after that nothing is shared.
void Syncer::writeAnew() {
    tideJob.mayLink = tideJob.mayLink && rewrites++ == 0;
    runOnWorker([job = tideJob] { return assembleStaging(job, {}, {}); }, &Syncer::onWrittenAnew);
}

void Syncer::onWrittenAnew(const TideResult& result) {
    if (takeAssembled(result)) {
        swapStaged();
    }
}

bool Syncer::takeAssembled(const TideResult& result) {
    if (result.ok) {
        assembled = result.outcome;
    } else {
        endFailed(named(result.outcome.lacksSpace
                            ? result.text
                            : QStringLiteral("Tide sync: %1").arg(result.text)));
    }
    return result.ok;
}

void Syncer::runOnWorker(std::function<TideResult()> job,
                         void (Syncer::*onResult)(const TideResult&)) {
    auto* watcher = new QFutureWatcher<TideResult>(this);
    connect(watcher, &QFutureWatcherBase::finished, this, [this, watcher, onResult] {
        watcher->deleteLater();
        (this->*onResult)(watcher->result());
    });
    // Memory that runs out ends the process here, rather than come as another exception there.
    watcher->setFuture(QtConcurrent::run([run = std::move(job)]() noexcept { return run(); }));
}

}  // namespace quorvelle
