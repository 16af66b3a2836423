#include "sync/markers.h"

#include <QJsonDocument>
#include <QJsonObject>

#include "config/json_number.h"
#include "files/file_tree.h"
#include "files/read_file.h"
#include "files/save_file.h"
#include "sync/state_folder.h"

namespace quorvelle {

namespace {

constexpr int kSchemaVersion = 1;

QJsonObject readObject(const QString& path) {
    return QJsonDocument::fromJson(readWhole(path).bytes).object();
}

QJsonObject marker(const QString& build, const QString& channel) {
    return {{QStringLiteral("schema_version"), kSchemaVersion},
            {QStringLiteral("build"), build},
            {QStringLiteral("channel"), channel}};
}

bool writeObject(const QString& path, const QJsonObject& object) {
    return saveWhole(path, QJsonDocument(object).toJson(QJsonDocument::Indented));
}

bool removeFile(const QString& path) {
    return !isPlainDirectory(path) && removeTree(path);
}

}  // namespace

InstalledMarker readInstalledMarker(const QString& dir) {
    const QJsonObject object = readObject(statePath(dir, kInstalledMarkerSuffix));
    return {object.value(u"build").toString(), object.value(u"channel").toString()};
}

bool isInstalled(const QString& dir) {
    return hasStateFolder(dir) && !readInstalledMarker(dir).build.isEmpty();
}

StagedMarker readStagedMarker(const QString& dir) {
    const QJsonObject object = readObject(statePath(dir, kStagedMarkerSuffix));
    return {object.value(u"build").toString(), object.value(u"channel").toString(),
            wholeNumberIn(object.value(u"total_size"))};
}

bool writeInstalledMarker(const QString& dir, const InstalledMarker& installed) {
    return writeObject(statePath(dir, kInstalledMarkerSuffix),
                       marker(installed.build, installed.channel));
}

bool writeStagedMarker(const QString& dir, const StagedMarker& staged) {
    QJsonObject object = marker(staged.build, staged.channel);
    object.insert(QStringLiteral("total_size"), staged.totalSize);
    return writeObject(statePath(dir, kStagedMarkerSuffix), object);
}

bool removeStagedMarker(const QString& dir) {
    return removeFile(statePath(dir, kStagedMarkerSuffix));
}

std::optional<SwapRecord> readSwapRecord(const QString& dir) {
    const QString path = statePath(dir, kSwapSuffix);
    if (!entryExists(path)) {
        return std::nullopt;
    }
    const QJsonObject object = readObject(path);
    const QString previous = object.value(u"previous").toString(QLatin1String(kOldSuffix));
    // It becomes part of a path.
    const bool sound = !previous.contains(u'/') && !previous.contains(u'\\');
    return SwapRecord{object.value(u"build").toString(), object.value(u"channel").toString(),
                      sound ? previous : QLatin1String(kOldSuffix), object.value(u"keep").toBool(),
                      object.value(u"moving").toBool(true)};
}

bool writeSwapRecord(const QString& dir, const SwapRecord& record) {
    QJsonObject object = marker(record.build, record.channel);
    object.insert(QStringLiteral("previous"), record.previous);
    object.insert(QStringLiteral("keep"), record.keep);
    object.insert(QStringLiteral("moving"), record.moving);
    return writeObject(statePath(dir, kSwapSuffix), object);
}

bool removeSwapRecord(const QString& dir) {
    return removeFile(statePath(dir, kSwapSuffix));
}

QString readStagingBuild(const QString& dir) {
    return QString::fromUtf8(readWhole(statePath(dir, kStagingBuildSuffix)).bytes).trimmed();
}

bool writeStagingBuild(const QString& dir, const QString& build) {
    return saveWhole(statePath(dir, kStagingBuildSuffix), build.toUtf8());
}

bool removeStagingBuild(const QString& dir) {
    return removeTree(statePath(dir, kStagingBuildSuffix));
}

}  // namespace quorvelle
