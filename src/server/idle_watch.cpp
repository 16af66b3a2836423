#include "server/idle_watch.h"

#include <QNetworkReply>
#include <algorithm>

namespace quorvelle {

namespace {

QString inSeconds(std::chrono::milliseconds time) {
    return QString::number(std::chrono::duration_cast<std::chrono::seconds>(time).count());
}

}  // namespace

IdleLimits idleLimits() {
    IdleLimits limits;
    bool isNumber = false;
    const uint seconds = qEnvironmentVariable("QUORVELLE_IDLE_TIMEOUT").toUInt(&isNumber);
    // A day and more is as good as none, and fits a timer.
    constexpr uint kMost = 24 * 60 * 60;
    if (isNumber) {
        limits.idle = limits.answer = std::chrono::seconds(std::min(seconds, kMost));
        if (seconds > 0) {
            limits.connect = std::min(limits.connect, limits.idle);
        }
    }
    return limits;
}

IdleWatch::IdleWatch(const IdleLimits& wanted, QObject* parent) : QObject(parent), limits(wanted) {
    timer.setSingleShot(true);
    connect(&timer, &QTimer::timeout, this, [this] { Q_EMIT expired(text); });
}

void IdleWatch::watch(const QNetworkReply& reply, const WatchedRequest& request) {
    answered = false;
    const auto limit = request.changes ? limits.answer : limits.idle;
    const auto onSent = [this, limit] { waitForBytes(answered ? limits.idle : limit); };
    const auto onBytes = [this] {
        answered = true;
        waitForBytes(limits.idle);
    };
    connect(&reply, &QNetworkReply::requestSent, this, onSent);
    connect(&reply, &QNetworkReply::uploadProgress, this, [this, limit](qint64 sent, qint64 all) {
        // The last report comes with the whole answer once more.
        if (!answered) {
            waitForBytes(sent == all ? limit : limits.idle);
        }
    });
    connect(&reply, &QNetworkReply::metaDataChanged, this, onBytes);
    connect(&reply, &QNetworkReply::readyRead, this, onBytes);
    connect(&reply, &QNetworkReply::downloadProgress, this, onBytes);
    connect(&reply, &QNetworkReply::finished, this, &IdleWatch::stop);
    if (request.leavesUnseen) {
        connect(&reply, &QNetworkReply::encrypted, this, onSent);
        if (reply.url().scheme() == QLatin1String("http")) {
            // The network layer itself gives up a connection after half a minute.
            onSent();
            return;
        }
    }
    wait(limits.connect,
         QStringLiteral("no connection within %1 s").arg(inSeconds(limits.connect)));
}

void IdleWatch::waitForBytes(std::chrono::milliseconds limit) {
    wait(limit, QStringLiteral("no data for %1 s").arg(inSeconds(limit)));
}

void IdleWatch::wait(std::chrono::milliseconds limit, const QString& reason) {
    text = reason;
    if (limit.count() > 0) {
        timer.start(limit);
    } else {
        timer.stop();
    }
}

}  // namespace quorvelle
