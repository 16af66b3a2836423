#include "onboarding/server_storage.h"

#include <QJsonDocument>
#include <utility>

#include "config/server_url.h"
#include "server/url.h"

namespace quorvelle::onboarding {

namespace {

using Outcome = SaveResult::Outcome;

constexpr int kPauseMs = 2000;
constexpr qint64 kActivationMs = 30000;

const QString kStoragePath = QStringLiteral("/api/storage");

QString timeOutText(const Server& server) {
    return QStringLiteral("%1 did not answer within a minute").arg(server.url);
}

CallResult call(BoundedCalls& calls, const Server& server, HttpRequest request,
                OnInterrupt onInterrupt) {
    request.token = server.token;
    return calls.send(std::move(request), {std::chrono::minutes(1), timeOutText(server)},
                      onInterrupt);
}

CallResult read(BoundedCalls& calls, const Server& server, const QString& path,
                OnInterrupt onInterrupt) {
    return call(calls, server, {.method = "GET", .url = apiUrl(server.url, path)}, onInterrupt);
}

}  // namespace

bool backupsShareBucket(BoundedCalls& calls, const Server& server) {
    const CallResult reply =
        read(calls, server, QStringLiteral("/api/backups"), OnInterrupt::kGiveUp);
    return reply.succeeded && reply.object.value(u"shared").toBool();
}

SaveResult saveStorage(BoundedCalls& calls, const Server& server, const QJsonObject& settings) {
    const CallResult result = call(calls, server,
                                   {.method = "PUT",
                                    .url = apiUrl(server.url, kStoragePath),
                                    .contentType = "application/json",
                                    .body = QJsonDocument(settings).toJson(QJsonDocument::Compact)},
                                   OnInterrupt::kGiveUpSoon);
    if (result.succeeded) {
        return {.outcome = Outcome::kSaved};
    }
    if (result.answered()) {
        return {
            Outcome::kRefused,
            QStringLiteral("%1 refused the storage settings: %2").arg(server.url, result.reason)};
    }
    return {Outcome::kNoAnswer,
            result.reason == timeOutText(server)
                ? result.reason
                : QStringLiteral("%1 did not answer: %2").arg(server.url, result.reason)};
}

SaveResult saveUntilActive(const std::function<SaveResult()>& save, const Clock& clock,
                           const std::function<bool()>& stopped,
                           const std::function<void()>& onFirstRefusal) {
    const qint64 start = clock.now();
    SaveResult result = save();
    if (result.outcome == Outcome::kRefused && !stopped()) {
        onFirstRefusal();
    }
    while (result.outcome == Outcome::kRefused && clock.now() - start < kActivationMs) {
        if (!stopped()) {
            clock.sleep(kPauseMs);
        }
        if (stopped()) {
            break;
        }
        result = save();
    }
    return result;
}

bool hasStorage(BoundedCalls& calls, const Server& server, const QJsonObject& settings) {
    const CallResult reply = read(calls, server, kStoragePath, OnInterrupt::kGoOn);
    const auto text = [&reply](QStringView key) {
        return withoutTrailingSlashes(reply.object.value(key).toString());
    };
    const QString endpoint = text(u"endpoint");
    return reply.succeeded && text(u"bucket") == settings.value(u"bucket").toString() &&
           (endpoint.isEmpty() || endpoint == settings.value(u"endpoint").toString());
}

}  // namespace quorvelle::onboarding
