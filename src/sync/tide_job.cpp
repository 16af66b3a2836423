#include "sync/tide_job.h"

#include <chrono>
#include <vector>

#include "config/config_document.h"
#include "sync/known_cuts.h"
#include "tide/store/bucket_environment.h"
#include "tide/verify.h"

namespace quorvelle {

namespace {

constexpr int kReplaceAttempts = 5;
constexpr std::chrono::milliseconds kBytesPause{50};
const QString kPublicKey = QStringLiteral("tide_public_key");

/// Passes on what is worth telling, for whom it is told has to catch up.
class Telling {
public:
    explicit Telling(const BytesCallback& callback) : onBytes(callback) {}

    void done(std::int64_t bytes) {
        const auto now = std::chrono::steady_clock::now();
        if (onBytes && now - last >= kBytesPause) {
            last = now;
            onBytes(bytes, total);
        }
    }

    std::optional<std::int64_t> total = {};

private:
    const BytesCallback& onBytes;
    std::chrono::steady_clock::time_point last = {};
};

}  // namespace

QJsonArray subscriptionsWithKeys(const QJsonObject& document) {
    QJsonArray subscriptions = config::subscriptions(document);
    for (QJsonValueRef reference : subscriptions) {
        QJsonObject subscription = reference.toObject();
        const QJsonObject entry =
            config::serverEntry(document, subscription.value(u"server").toString());
        if (!subscription.contains(kPublicKey) && entry.contains(kPublicKey)) {
            subscription.insert(kPublicKey, entry.value(kPublicKey));
            reference = subscription;
        }
    }
    return subscriptions;
}

bool mustBeSigned(const QJsonObject& subscriptionWithKey) {
    return subscriptionWithKey.contains(kPublicKey);
}

tide::PublicKeys tidePublicKeys(const QJsonObject& subscriptionWithKey) {
    if (!mustBeSigned(subscriptionWithKey)) {
        return qgetenv("QUORVELLE_TIDE_PUBLIC_KEY").toStdString();
    }
    const QJsonValue value = subscriptionWithKey.value(kPublicKey);
    std::vector<std::string> keys;
    for (const QJsonValue& key : value.isArray() ? value.toArray() : QJsonArray{value}) {
        keys.push_back(key.toString().toStdString());
    }
    return tide::PublicKeys(keys.empty() ? std::vector<std::string>(1) : keys);
}

TideResult checkInstall(const TideJob& job, bool quick, const BytesCallback& onBytes) {
    tide::ConnectionCache connections;
    const auto bucket = tide::bucketFromEnvironment(&connections);
    int missing = 0;
    int corrupt = 0;
    int inUse = 0;
    const auto count = [&](const std::string&, const std::string& problem) {
        ++(problem == "missing" ? missing : problem == tide::kInUse ? inUse : corrupt);
    };
    Telling telling(onBytes);
    tide::CheckProgress progress;
    if (!quick) {
        progress = [&](std::uint64_t, std::uint64_t, std::int64_t bytes) { telling.done(bytes); };
    }
    std::string error;
    if (!tide::verifyInstall(*bucket, job.source, job.installDir, progress, count, &error, quick,
                             &connections)) {
        return {true, QStringLiteral(" (check skipped: %1)").arg(QString::fromStdString(error))};
    }
    // What nobody can read cannot be told from good bytes, and could not be replaced either.
    if (missing == 0 && corrupt == 0 && inUse > 0) {
        return {true, QStringLiteral(" (check skipped: %1 file(s) in use)").arg(inUse)};
    }
    if (missing == 0 && corrupt == 0) {
        return {true, quick ? QStringLiteral(" (checked)") : QStringLiteral(" (verified)")};
    }
    return {false, QStringLiteral("%1 file(s) missing, %2 corrupt").arg(missing).arg(corrupt)};
}

TideResult assembleStaging(const TideJob& job, const PercentCallback& onPercent,
                           const BytesCallback& onBytes) {
    tide::ConnectionCache connections;
    const auto bucket = tide::bucketFromEnvironment(&connections);
    Telling telling(onBytes);
    const auto onSize = [&](std::uint64_t size) {
        telling.total = static_cast<std::int64_t>(size);
        telling.done(0);
    };
    int lastPercent = -1;
    const auto progress = [&](std::uint64_t done, std::uint64_t total, std::int64_t bytes) {
        const int percent = total == 0 ? 0 : static_cast<int>(done * 100 / total);
        if (percent != lastPercent && onPercent) {
            onPercent(percent, bytes);
        }
        lastPercent = percent;
        telling.done(bytes);
    };
    TideResult result;
    std::string error;
    result.ok = tide::downloadAndAssemble(
        *bucket,
        {.source = job.source,
         .chunkUrls = *job.chunkUrls,
         .targetDirectory = job.stagingDir,
         .reuseDirectory = job.installDir,
         .known = [&] { return loadCuts(QString::fromStdString(job.installDir)); },
         .connections = &connections,
         .onSize = onSize,
         .progress = progress,
         .maxReplaceAttempts = kReplaceAttempts,
         .mayLink = job.mayLink,
         .outcome = &result.outcome},
        &error);
    result.text = QString::fromStdString(error);
    if (result.ok && lastPercent < 0 && onPercent) {
        onPercent(0, 0);  // A build of empty files has no chunk to report.
    }
    return result;
}

}  // namespace quorvelle
