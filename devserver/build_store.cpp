#include "build_store.h"

#include <QDirIterator>
#include <QJsonArray>

#include "data_folder.h"
#include "files/safe_path.h"

namespace quorvelle::devserver {

namespace {

/// Below the folder of a build.
const QString kManifestFile = QStringLiteral("/build.json");

QMap<QString, qint64> sizesBelow(const QDir& files) {
    QMap<QString, qint64> sizes;
    QDirIterator entry(files.path(), QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    while (entry.hasNext()) {
        entry.next();
        sizes.insert(files.relativeFilePath(entry.filePath()), entry.fileInfo().size());
    }
    return sizes;
}

QJsonObject manifestOf(const QString& build, const QMap<QString, qint64>& sizes) {
    QJsonArray files;
    qint64 total = 0;
    for (auto file = sizes.begin(); file != sizes.end(); ++file) {
        files.append(QJsonObject{{QStringLiteral("path"), file.key()},
                                 {QStringLiteral("size"), file.value()}});
        total += file.value();
    }
    return {{QStringLiteral("schema_version"), 1},
            {QStringLiteral("build"), build},
            {QStringLiteral("created_at"), timestamp()},
            {QStringLiteral("disabled"), false},
            {QStringLiteral("file_count"), files.size()},
            {QStringLiteral("total_size"), total},
            {QStringLiteral("files"), files}};
}

QJsonObject summaryOf(QJsonObject manifest) {
    manifest.remove(QStringLiteral("files"));
    manifest.remove(QStringLiteral("schema_version"));
    return manifest;
}

}  // namespace

std::optional<QString> BuildStore::load() {
    for (const QString& name : folder.entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        const QString path = folder.filePath(name + kManifestFile);
        if (!QFile::exists(path)) {
            continue;
        }
        const auto manifest = readJson(path);
        if (!manifest || fileNameFor((*manifest)[u"build"].toString()) != name) {
            return QStringLiteral("cannot read the build in '%1'").arg(path);
        }
        finalized.insert((*manifest)[u"build"].toString(), summaryOf(*manifest));
    }
    return std::nullopt;
}

std::optional<Refusal> BuildStore::refusalFor(const QString& build, const QString& path) const {
    const std::lock_guard lock(mutex);
    return refusalLocked(build, path);
}

std::optional<Refusal> BuildStore::refusalLocked(const QString& build, const QString& path) const {
    if (!fileNameFor(build)) {
        return Refusal{400, QStringLiteral("the build id is too long")};
    }
    if (!files::isSafeRelativePath(path.toStdString())) {
        return Refusal{400, QStringLiteral("'%1' is not a safe file path").arg(path)};
    }
    if (finalized.contains(build)) {
        return Refusal{409, QStringLiteral("build '%1' is already finalized").arg(build)};
    }
    return std::nullopt;
}

std::optional<Refusal> BuildStore::add(const QString& build, const QString& path,
                                       QTemporaryFile& file) {
    const std::lock_guard lock(mutex);
    if (auto refusal = refusalLocked(build, path)) {
        return refusal;
    }
    const QString target = folder.filePath(*fileNameFor(build) + QStringLiteral("/files/") + path);
    if (QFileInfo(target).isDir() || !QFileInfo(target).dir().mkpath(QStringLiteral("."))) {
        return Refusal{409, QStringLiteral("there is no place for '%1' among the files").arg(path)};
    }
    if (const auto error = takeOver(file, target)) {
        return Refusal{500, QStringLiteral("cannot store '%1': %2")
                                .arg(path, QString::fromStdString(error.message()))};
    }
    return std::nullopt;
}

Reply BuildStore::finalize(const QString& build) {
    const std::lock_guard lock(mutex);
    if (finalized.contains(build)) {
        return Refusal{409, QStringLiteral("build '%1' is already finalized").arg(build)};
    }
    const QDir root(folder.filePath(fileNameFor(build).value_or(QString())));
    const auto sizes = sizesBelow(QDir(root.filePath(QStringLiteral("files"))));
    if (sizes.isEmpty()) {
        return unknown(QStringLiteral("build"), build);
    }
    const QJsonObject manifest = manifestOf(build, sizes);
    if (!writeJson(root.path() + kManifestFile, manifest)) {
        return Refusal{500, QStringLiteral("cannot record build '%1'").arg(build)};
    }
    finalized.insert(build, summaryOf(manifest));
    return QJsonObject{{QStringLiteral("build"), build},
                       {QStringLiteral("file_count"), manifest[u"file_count"]},
                       {QStringLiteral("total_size"), manifest[u"total_size"]}};
}

Reply BuildStore::setDisabled(const QString& build, bool disabled) {
    const std::lock_guard lock(mutex);
    Reply reply = manifestLocked(build);
    if (auto* manifest = std::get_if<QJsonObject>(&reply)) {
        (*manifest)[u"disabled"] = disabled;
        if (!writeJson(folder.filePath(*fileNameFor(build) + kManifestFile), *manifest)) {
            return Refusal{500, QStringLiteral("cannot record build '%1'").arg(build)};
        }
        return finalized[build] = summaryOf(*manifest);
    }
    return reply;
}

Reply BuildStore::remove(const QString& build) {
    const std::lock_guard lock(mutex);
    const auto name = fileNameFor(build);
    if (build.isEmpty() || !name || !folder.exists(*name)) {
        return unknown(QStringLiteral("build"), build);
    }
    // First what makes it a build: a deletion that is cut short leaves no damaged one.
    finalized.remove(build);
    QDir root(folder.filePath(*name));
    QFile::remove(root.path() + kManifestFile);
    if (!root.removeRecursively()) {
        return Refusal{500, QStringLiteral("cannot delete build '%1'").arg(build)};
    }
    return QJsonObject{{QStringLiteral("build"), build}};
}

QList<QJsonObject> BuildStore::list() const {
    const std::lock_guard lock(mutex);
    return finalized.values();
}

std::optional<QJsonObject> BuildStore::find(const QString& build) const {
    const std::lock_guard lock(mutex);
    const auto found = finalized.find(build);
    return found == finalized.end() ? std::nullopt : std::optional(*found);
}

Reply BuildStore::manifest(const QString& build) const {
    const std::lock_guard lock(mutex);
    return manifestLocked(build);
}

Reply BuildStore::manifestLocked(const QString& build) const {
    if (!finalized.contains(build)) {
        return unknown(QStringLiteral("build"), build);
    }
    const auto manifest = readJson(folder.filePath(*fileNameFor(build) + kManifestFile));
    if (!manifest) {
        return Refusal{500, QStringLiteral("cannot read build '%1'").arg(build)};
    }
    return *manifest;
}

Reply BuildStore::file(const QString& build, const QString& path) const {
    if (!find(build)) {
        return unknown(QStringLiteral("build"), build);
    }
    const QString file = folder.filePath(*fileNameFor(build) + QStringLiteral("/files/") + path);
    if (!files::isSafeRelativePath(path.toStdString()) || !QFileInfo(file).isFile()) {
        return Refusal{404, QStringLiteral("no file '%1' in build '%2'").arg(path, build)};
    }
    return FileBytes{file};
}

}  // namespace quorvelle::devserver
