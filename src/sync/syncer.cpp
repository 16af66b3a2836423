#include "sync/syncer.h"

#include <QDir>
#include <QFutureWatcher>
#include <utility>

#include "config/config_document.h"
#include "config/config_file.h"
#include "config/json_number.h"
#include "files/file_tree.h"
#include "server/next_step.h"
#include "server/server_option.h"
#include "sync/leftovers.h"
#include "sync/markers.h"
#include "sync/state_folder.h"
#include "sync/swap.h"

namespace quorvelle {

namespace {

/// The first version of channels that this release does not know.
constexpr int kNewerChannelSchema = 2;

constexpr QLatin1String kAlreadyRunning("a sync is already running");

/// Where the subscriptions of the configuration install.
QStringList installDirectories() {
    QStringList directories;
    for (const QJsonValue& subscription : config::subscriptions(config::load())) {
        directories.append(subscription[u"dir"].toString());
    }
    return directories;
}

}  // namespace

Syncer::Syncer(QObject* parent) : QObject(parent) {}

Syncer::~Syncer() {
    for (auto* watcher : findChildren<QFutureWatcherBase*>()) {
        watcher->waitForFinished();
    }
}

void Syncer::start(const QJsonObject& subscription, bool forced) {
    if (running) {
        Q_EMIT failed(kAlreadyRunning);
        return;
    }
    force = forced;
    selfHeal = selfHealOf(subscription);
    if (selfHeal == SelfHeal::kDefault) {
        selfHeal = defaultSelfHeal;
    }
    name = subscription.value(u"name").toString();
    server = subscription.value(u"server").toString();
    channel = subscription.value(u"channel").toString();
    givenDir = subscription.value(u"dir").toString();
    dir = behindLink(givenDir);
    token = subscription.value(u"token").toString();
    if (token.isEmpty()) {
        token = resolveToken();
    }
    tideJob = {};
    assembled = {};
    rewrites = 0;
    tideJob.source.publicKeys = tidePublicKeys(subscription);
    onlySigned = mustBeSigned(subscription);
    if (server.isEmpty() || channel.isEmpty() || givenDir.isEmpty()) {
        endFailed(QStringLiteral("subscription '%1' is incomplete (needs server, channel, dir)")
                      .arg(name.isEmpty() ? QStringLiteral("?") : name));
        return;
    }
    // Everything below reads and changes the state folder, which another sync may be doing.
    if (!takeLock()) {
        return;
    }
    // In this order: recovery has to see the state where this release keeps it, and an ".old"
    // that recovery needs must not count as left over.
    migrateLegacyState(dir, installDirectories());
    tellKept(recoverSwap(dir));
    clearLeftovers(dir);
    running = true;
    Q_EMIT stepped(WorkStep::kChecking);
    Q_EMIT progress(named(QStringLiteral("checking channel '%1' ...").arg(channel)));
    get(apiPath(QStringLiteral("/api/channels/%1"), channel), {}, QStringLiteral("sync"),
        &Syncer::onChannelReply);
}

bool Syncer::takeLock() {
    const QString path = statePath(dir, kLockSuffix);
    switch (lock.tryAcquire(path)) {
        case ProcessLock::Outcome::kBusy:
            endFailed(kAlreadyRunning);
            return false;
        case ProcessLock::Outcome::kRefused:
            endFailed(named(QStringLiteral("cannot lock %1: %2").arg(path, lock.reason())));
            return false;
        case ProcessLock::Outcome::kHeld:
        // Where no lock can be made, nothing else can be written either, and the sync
        // comes to the end that is due to that.
        case ProcessLock::Outcome::kNoPlace:
            break;
    }
    return true;
}

void Syncer::onChannelReply(const HttpExchange& exchange) {
    if (exchange.isOtherThanObject()) {
        endFailed(exchange.failureText(named(QStringLiteral("sync")),
                                       QStringLiteral("the reply is not JSON")));
        return;
    }
    const QJsonObject reply = exchange.object();
    if (numberIn(reply.value(u"schema_version")).value_or(1) >= kNewerChannelSchema) {
        endFailed(
            named(QStringLiteral("this channel was written by a newer Quorvelle - please update")));
        return;
    }
    setBuild(reply.value(u"build").toString());
    if (reply.value(u"engine").toString(QStringLiteral("cargo")) == QStringLiteral("tide")) {
        checkTideChannel();
        return;
    }
    if (onlySigned) {
        endFailed(named(QStringLiteral("channel '%1' is not signed but verification is required")
                            .arg(channel)));
        return;
    }
    if (buildId.isEmpty()) {
        endFinished(false, QStringLiteral("'%1' has no build yet").arg(name));
        return;
    }
    if (!force && readInstalledMarker(dir).build == buildId) {
        endFinished(false, QStringLiteral("'%1' is up to date (build %2)").arg(name, buildId));
        return;
    }
    if (!canReplaceInstall()) {
        return;
    }
    const StagedMarker staged = readStagedMarker(dir);
    // What the chunk engine staged may share files with the install; that engine looks at
    // each of them again before it puts them in place, and nobody would here.
    if (staged.build == buildId && readStagingBuild(dir) != buildId) {
        Q_EMIT progress(named(
            QStringLiteral("build %1 is already staged - retrying activation ...").arg(buildId)));
        files = {};
        totalSize = staged.totalSize;
        activateStaged();
        return;
    }
    fetchManifest();
}

void Syncer::setBuild(const QString& id) {
    buildId = id;
    Q_EMIT buildKnown(id);
}

void Syncer::get(const QString& path, const QueryItems& query, const QString& context,
                 void (Syncer::*onReply)(const HttpExchange&), HttpExchange::Sink sink,
                 std::optional<qint64> length) {
    auto exchange = std::make_unique<HttpExchange>(
        network, HttpRequest{.method = "GET", .url = apiUrl(server, path, query), .token = token});
    if (sink) {
        exchange->streamTo(std::move(sink));
        exchange->expectLength(length);
    }
    runOwned(std::move(exchange), *this, [this, context, onReply](const HttpExchange& ended) {
        if (ended.succeeded()) {
            (this->*onReply)(ended);
        } else if (!storeFailure.isEmpty()) {
            endFailed(named(storeFailure));
        } else {
            endFailed(ended.failureText(named(context)), nextStep(server, ended.statusCode()));
        }
    });
}

bool Syncer::canReplaceInstall() {
    if (!isMountPoint(dir)) {
        return true;
    }
    endFailed(named(QStringLiteral("%1 cannot be replaced as a whole (it is a mount point) - "
                                   "install into a folder below it")
                        .arg(QDir::toNativeSeparators(givenDir))));
    return false;
}

QString Syncer::named(const QString& rest) const {
    return u'\'' + name + QStringLiteral("': ") + rest;
}

void Syncer::endFinished(bool downloaded, const QString& message) {
    end();
    Q_EMIT finished(downloaded, message);
}

void Syncer::endBlocked(const QString& message) {
    end();
    Q_EMIT blocked(buildId, message);
}

void Syncer::endFailed(const QString& message, const QString& note) {
    end();
    Q_EMIT failed(message);
    if (!note.isEmpty()) {
        Q_EMIT noted(note);
    }
}

/// Before the signal, whose receiver may start this object again.
void Syncer::end() {
    running = false;
    target.reset();
    storeFailure.clear();
    lock.release();
}

}  // namespace quorvelle
