#include <QDir>
#include <QHash>
#include <QSet>
#include <limits>
#include <utility>

#include "config/json_number.h"
#include "files/file_tree.h"
#include "files/safe_path.h"
#include "sync/leftovers.h"
#include "sync/markers.h"
#include "sync/state_folder.h"
#include "sync/swap.h"
#include "sync/syncer.h"

namespace quorvelle {

namespace {

/// The first version of builds that this release does not know.
constexpr int kNewerBuildSchema = 2;

/// The file's size where the manifest tells it.
std::optional<qint64> sizeOf(const QJsonValue& entry) {
    const qint64 size = wholeNumberIn(entry.toObject().value(u"size"), -1);
    return size >= 0 ? std::optional(size) : std::nullopt;
}

/// The sum, where the manifest tells every size.
std::optional<qint64> sizeOfAll(const QJsonArray& files) {
    qint64 sum = 0;
    for (const QJsonValue& entry : files) {
        const std::optional<qint64> size = sizeOf(entry);
        if (!size || *size > std::numeric_limits<qint64>::max() - sum) {
            return std::nullopt;
        }
        sum += *size;
    }
    return sum;
}

QString pathOf(const QJsonValue& entry) {
    return entry.toObject().value(u"path").toString();
}

/// The first path that an earlier one differs from, but not to the file system (in case, on
/// Windows). The same path twice is one file.
std::optional<QString> findSecondSpelling(const QJsonArray& files) {
    QHash<std::string, QString> spellings;
    for (const QJsonValue& entry : files) {
        const QString path = pathOf(entry);
        QString& first = spellings[files::comparablePath(path.toStdString())];
        if (!first.isEmpty() && first != path) {
            return path;
        }
        first = path;
    }
    return std::nullopt;
}

}  // namespace

void Syncer::fetchManifest() {
    Q_EMIT progress(named(QStringLiteral("fetching manifest of build %1 ...").arg(buildId)));
    get(apiPath(QStringLiteral("/api/builds/%1"), buildId), {}, QStringLiteral("manifest fetch"),
        &Syncer::onManifestReply);
}

void Syncer::onManifestReply(const HttpExchange& exchange) {
    const QJsonObject reply = exchange.object();
    if (numberIn(reply.value(u"schema_version")).value_or(1) >= kNewerBuildSchema) {
        endFailed(
            named(QStringLiteral("this build was made by a newer Quorvelle - please update")));
        return;
    }
    files = reply.value(u"files").toArray();
    if (files.isEmpty()) {
        endFailed(named(QStringLiteral("build %1 has an empty manifest").arg(buildId)));
        return;
    }
    if (const auto path = findSecondSpelling(files)) {
        endFailed(named(QStringLiteral("manifest lists the path twice: %1").arg(*path)));
        return;
    }
    if (!prepareStaging()) {
        endFailed(named(
            QStringLiteral("cannot create staging dir %1").arg(statePath(dir, kStagingSuffix))));
        return;
    }
    fileIndex = 0;
    totalSize = 0;
    bytesInAll = sizeOfAll(files);
    Q_EMIT stepped(WorkStep::kDownloading);
    fetchNextFile();
}

bool Syncer::prepareStaging() {
    // The markers go first: they must never speak of a staging directory that holds
    // something else.
    const QString staging = statePath(dir, kStagingSuffix);
    return withdrawStaged(dir) && removeStagingBuild(dir) && discardTree(dir, kStagingSuffix) &&
           QDir().mkpath(staging);
}

void Syncer::fetchNextFile() {
    const int count = static_cast<int>(files.size());
    if (fileIndex >= count) {
        activateIfComplete();
        return;
    }
    const QString path = pathOf(files.at(fileIndex));
    if (!files::isSafeRelativePath(path.toStdString())) {
        endFailed(named(QStringLiteral("manifest contains an unsafe path: %1").arg(path)));
        return;
    }
    Q_EMIT progress(named(QStringLiteral("fetching %1/%2: %3")
                              .arg(QString::number(fileIndex + 1), QString::number(count), path)));
    Q_EMIT progressPercent(static_cast<int>(qint64(fileIndex) * 100 / count));
    get(
        apiPath(QStringLiteral("/api/builds/%1/files"), buildId), {{QStringLiteral("path"), path}},
        QStringLiteral("download of %1").arg(path), &Syncer::onFileReply,
        [this](const QByteArray& bytes) { return storeBytes(bytes); }, sizeOf(files.at(fileIndex)));
}

bool Syncer::openTarget() {
    const QString path = pathOf(files.at(fileIndex));
    const QString staging = statePath(dir, kStagingSuffix);
    const QString targetPath = QDir(staging).filePath(path);
    // Staging is not made anew: what it held before would be missing in the build.
    if (!makeDirectoriesBelow(staging, path.section(u'/', 0, -2))) {
        storeFailure = QStringLiteral("cannot create directory for %1").arg(path);
        return false;
    }
    target = std::make_unique<SaveFile>(targetPath);
    if (!target->open()) {
        storeFailure = QStringLiteral("cannot write %1").arg(targetPath);
        return false;
    }
    return true;
}

bool Syncer::storeBytes(const QByteArray& bytes) {
    if (!target && !openTarget()) {
        return false;
    }
    if (!target->write(bytes)) {
        storeFailure = couldNotFinalize();
        return false;
    }
    totalSize += bytes.size();
    Q_EMIT moved(totalSize, bytesInAll);
    return true;
}

void Syncer::onFileReply(const HttpExchange&) {
    // A file without bytes was not opened while its body arrived.
    if (!target && !openTarget()) {
        endFailed(named(storeFailure));
        return;
    }
    // The activation brings all of staging to the disk before anything vouches for it.
    if (!target->commit(OnDisk::kLater)) {
        endFailed(named(couldNotFinalize()));
        return;
    }
    target.reset();
    ++fileIndex;
    fetchNextFile();
}

void Syncer::activateIfComplete() {
    QSet<QString> paths;
    for (const QJsonValue& entry : std::as_const(files)) {
        paths.insert(pathOf(entry));
    }
    if (countFiles(statePath(dir, kStagingSuffix)) == paths.size()) {
        activateStaged();
    } else {
        endFailed(named(QStringLiteral("staging is not complete - the next sync starts over")));
    }
}

QString Syncer::couldNotFinalize() const {
    const QString path = pathOf(files.at(fileIndex));
    return QStringLiteral("could not finalize %1")
        .arg(QDir(statePath(dir, kStagingSuffix)).filePath(path));
}

}  // namespace quorvelle
