#include "sync/tide_job.h"

#include "config/config_document.h"
#include "config/config_file.h"
#include "tide/assemble.h"
#include "tide/store/bucket_environment.h"
#include "tide/verify.h"

namespace quorvelle {

namespace {

constexpr int kReplaceAttempts = 5;

}  // namespace

QString tidePublicKey(const QJsonObject& subscription) {
    const QString key = QStringLiteral("tide_public_key");
    QString found = subscription.value(key).toString();
    if (found.isEmpty()) {
        const QString server = subscription.value(u"server").toString();
        found = config::findServer(config::load(), server).value(key).toString();
    }
    return found.isEmpty() ? qEnvironmentVariable("QUORVELLE_TIDE_PUBLIC_KEY") : found;
}

TideResult checkInstall(const TideJob& job, bool quick) {
    const auto bucket = tide::bucketFromEnvironment();
    int missing = 0;
    int corrupt = 0;
    const auto count = [&](const std::string&, const std::string& problem) {
        ++(problem == "missing" ? missing : corrupt);
    };
    std::string error;
    if (!tide::verifyInstall(*bucket, job.channel, job.installDir, job.publicKey, job.manifestUrl,
                             job.signatureUrl, {}, count, &error, quick)) {
        return {true, QStringLiteral(" (check skipped: %1)").arg(QString::fromStdString(error))};
    }
    if (missing == 0 && corrupt == 0) {
        return {true, quick ? QStringLiteral(" (checked)") : QStringLiteral(" (verified)")};
    }
    return {false, QStringLiteral("%1 file(s) missing, %2 corrupt").arg(missing).arg(corrupt)};
}

TideResult assembleStaging(const TideJob& job, const PercentCallback& onPercent) {
    const auto bucket = tide::bucketFromEnvironment();
    int lastPercent = -1;
    const auto progress = [&](std::uint64_t done, std::uint64_t total, std::int64_t bytes) {
        const int percent = total == 0 ? 0 : static_cast<int>(done * 100 / total);
        if (percent != lastPercent) {
            lastPercent = percent;
            onPercent(percent, bytes);
        }
    };
    std::string error;
    const bool done = tide::downloadAndAssemble(
        *bucket, job.channel, job.stagingDir, job.publicKey, job.manifestUrl, job.signatureUrl,
        job.chunkUrls, progress, {}, kReplaceAttempts, job.installDir, &error);
    if (done && lastPercent < 0) {
        onPercent(0, 0);  // A build of empty files has no chunk to report.
    }
    return {done, QString::fromStdString(error)};
}

}  // namespace quorvelle
