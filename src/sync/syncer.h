#pragma once

#include <QJsonArray>
#include <QJsonObject>
#include <QNetworkAccessManager>
#include <QObject>
#include <QString>
#include <functional>
#include <memory>
#include <optional>

#include "config/subscription.h"
#include "console/progress_report.h"
#include "files/process_lock.h"
#include "files/save_file.h"
#include "server/http_exchange.h"
#include "server/url.h"
#include "sync/tide_job.h"

namespace quorvelle {

/// Brings one install directory to its channel's current build: asks the server which
/// build that is, fetches it into a staging directory and swaps that in.
///
/// Event-driven and never blocking on the network; everything runs on the thread that
/// owns the object. Each start() ends in exactly one of finished, blocked and failed,
/// with `running` already false, so the object can start again. Between processes one
/// install directory has one sync at a time.
class Syncer : public QObject {
    Q_OBJECT

public:
    explicit Syncer(QObject* parent = nullptr);

    /// Waits for a worker that is still at work.
    ~Syncer() override;

    /// Starts the sync of a subscription as the configuration stores it (keys "name",
    /// "server", "channel", "dir", "token", "self_heal", "tide_public_key", also that of the
    /// server's entry: subscriptionsWithKeys()). `force` downloads a build that
    /// is already installed once more. Returns at once; a second start while running
    /// emits failed and leaves the running sync alone.
    void start(const QJsonObject& subscription, bool force);

Q_SIGNALS:
    /// A line for the person who waits.
    void progress(const QString& message);
    /// The same of a line that says no more than moved() does.
    void percentLine(const QString& message);
    /// Another step begins.
    void stepped(WorkStep step);
    /// How many bytes of the step are done, and how many it has where that is known.
    void moved(qint64 bytes, std::optional<qint64> total);
    /// The build that the channel is at.
    void buildKnown(const QString& buildId);
    /// How much of the current download is done, 0 to 100.
    void progressPercent(int percent);
    /// Success: `downloaded` when a build was put in place, false when nothing had to
    /// be done.
    void finished(bool downloaded, const QString& message);
    /// The build is staged but could not be put in place; the next sync retries.
    void blocked(const QString& buildId, const QString& message);
    void failed(const QString& message);
    /// Besides one of these: a line that only a person at a terminal is to see.
    void noted(const QString& message);

private:
    // syncer.cpp: the driver
    bool takeLock();
    void onChannelReply(const HttpExchange& exchange);
    void setBuild(const QString& id);
    void get(const QString& path, const QueryItems& query, const QString& context,
             void (Syncer::*onReply)(const HttpExchange&), HttpExchange::Sink sink = {},
             std::optional<qint64> length = {});
    bool canReplaceInstall();
    QString named(const QString& rest) const;
    void endFinished(bool downloaded, const QString& message);
    void endBlocked(const QString& message);
    void endFailed(const QString& message, const QString& note = {});
    void end();

    // syncer_cargo.cpp: file by file through the server's API
    void fetchManifest();
    void onManifestReply(const HttpExchange& exchange);
    bool prepareStaging();
    void fetchNextFile();
    bool openTarget();
    bool storeBytes(const QByteArray& bytes);
    void onFileReply(const HttpExchange& exchange);
    void activateIfComplete();
    QString couldNotFinalize() const;

    // syncer_tide.cpp: assembled from chunks on a worker
    void checkTideChannel();
    void onTideReply(const HttpExchange& exchange);
    void startSelfHeal();
    void onSelfHealResult(const TideResult& result);
    void startTideDownload();
    BytesCallback onMainThread();
    bool prepareTideStaging();
    void onTideDownloaded(const TideResult& result);
    void onWrittenAnew(const TideResult& result);
    bool takeAssembled(const TideResult& result);
    void runOnWorker(std::function<TideResult()> job, void (Syncer::*onResult)(const TideResult&));

    // syncer_activation.cpp: staging into place
    void activateStaged();
    void swapStaged();
    void endSwapped();
    void writeAnew();
    void tellKept(const QString& path);

    QNetworkAccessManager network;
    bool running = false;
    bool force = false;
    SelfHeal defaultSelfHeal = SelfHeal::kQuick;
    SelfHeal selfHeal = SelfHeal::kQuick;
    QString name;
    QString server;
    QString channel;
    /// Where the build goes: behind the link that the subscription may name.
    QString dir;
    /// The same as the subscription has it, for messages.
    QString givenDir;
    QString token;
    QString buildId;
    QJsonArray files;
    /// The bytes of all files, where the manifest tells each of them.
    std::optional<qint64> bytesInAll;
    int fileIndex = 0;
    qint64 totalSize = 0;

    ProcessLock lock;
    /// The file that is being received, from its first byte to its commit.
    std::unique_ptr<SaveFile> target;
    /// What the worker is given a copy of.
    TideJob tideJob;
    bool onlySigned = false;
    /// What the worker told of the build in staging.
    tide::AssemblyOutcome assembled;
    /// How often the build was put together once more for somebody who wrote into it.
    int rewrites = 0;
    /// Why the file could not be stored; then the transfer was given up for it.
    QString storeFailure;
};

}  // namespace quorvelle
