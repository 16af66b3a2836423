#include "build_store.h"

#include <QDirIterator>
#include <QJsonArray>
#include <filesystem>
#include <system_error>

#include "data_folder.h"
#include "files/safe_path.h"
#include "names.h"

namespace quorvelle::devserver {
namespace {

Refusal unknownBuild(const QString& build) {
    return {404, QString("no build '%1'").arg(build)};
}

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
        files.append(QJsonObject{{"path", file.key()}, {"size", file.value()}});
        total += file.value();
    }
    return {{"schema_version", 1},
            {"build", build},
            {"created_at", timestamp()},
            {"disabled", false},
            {"file_count", files.size()},
            {"total_size", total},
            {"files", files}};
}

QJsonObject summaryOf(QJsonObject manifest) {
    manifest.remove("files");
    manifest.remove("schema_version");
    return manifest;
}

}  // namespace

std::optional<QString> BuildStore::load() {
    for (const QString& name : folder_.entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        const QString path = folder_.filePath(name + "/build.json");
        if (!QFile::exists(path)) {
            continue;
        }
        const auto manifest = readJson(path);
        if (!manifest || fileNameFor((*manifest)["build"].toString()) != name) {
            return QString("cannot read the build in '%1'").arg(path);
        }
        finalized_.insert((*manifest)["build"].toString(), summaryOf(*manifest));
    }
    return std::nullopt;
}

std::optional<Refusal> BuildStore::refusalFor(const QString& build, const QString& path) const {
    const std::lock_guard lock(mutex_);
    return refusalLocked(build, path);
}

std::optional<Refusal> BuildStore::refusalLocked(const QString& build, const QString& path) const {
    if (!fileNameFor(build)) {
        return Refusal{400, "the build id is too long"};
    }
    if (!files::isSafeRelativePath(path.toStdString())) {
        return Refusal{400, QString("'%1' is not a safe file path").arg(path)};
    }
    if (finalized_.contains(build)) {
        return Refusal{409, QString("build '%1' is already finalized").arg(build)};
    }
    return std::nullopt;
}

std::optional<Refusal> BuildStore::add(const QString& build, const QString& path,
                                       QTemporaryFile& file) {
    const std::lock_guard lock(mutex_);
    if (auto refusal = refusalLocked(build, path)) {
        return refusal;
    }
    const QString target = folder_.filePath(*fileNameFor(build) + "/files/" + path);
    if (QFileInfo(target).isDir() || !QFileInfo(target).dir().mkpath(".")) {
        return Refusal{409, QString("there is no place for '%1' among the files").arg(path)};
    }
    std::error_code error;
    std::filesystem::rename(nativePath(file.fileName()), nativePath(target), error);
    if (error) {
        return Refusal{500, QString("cannot store '%1': %2").arg(path, error.message().c_str())};
    }
    file.setAutoRemove(false);
    return std::nullopt;
}

Reply BuildStore::finalize(const QString& build) {
    const std::lock_guard lock(mutex_);
    if (finalized_.contains(build)) {
        return Refusal{409, QString("build '%1' is already finalized").arg(build)};
    }
    const QDir root(folder_.filePath(fileNameFor(build).value_or(QString())));
    const auto sizes = sizesBelow(QDir(root.filePath("files")));
    if (sizes.isEmpty()) {
        return unknownBuild(build);
    }
    const QJsonObject manifest = manifestOf(build, sizes);
    if (!writeJson(root.filePath("build.json"), manifest)) {
        return Refusal{500, QString("cannot record build '%1'").arg(build)};
    }
    finalized_.insert(build, summaryOf(manifest));
    return QJsonObject{{"build", build},
                       {"file_count", manifest["file_count"]},
                       {"total_size", manifest["total_size"]}};
}

Reply BuildStore::setDisabled(const QString& build, bool disabled) {
    Reply reply = manifest(build);
    if (auto* manifest = std::get_if<QJsonObject>(&reply)) {
        const std::lock_guard lock(mutex_);
        (*manifest)["disabled"] = disabled;
        if (!writeJson(folder_.filePath(*fileNameFor(build) + "/build.json"), *manifest)) {
            return Refusal{500, QString("cannot record build '%1'").arg(build)};
        }
        return finalized_[build] = summaryOf(*manifest);
    }
    return reply;
}

Reply BuildStore::remove(const QString& build) {
    const std::lock_guard lock(mutex_);
    const auto name = fileNameFor(build);
    if (build.isEmpty() || !name || !folder_.exists(*name)) {
        return unknownBuild(build);
    }
    // First what makes it a build: a deletion that is cut short leaves no damaged one.
    finalized_.remove(build);
    QDir root(folder_.filePath(*name));
    root.remove("build.json");
    if (!root.removeRecursively()) {
        return Refusal{500, QString("cannot delete build '%1'").arg(build)};
    }
    return QJsonObject{{"build", build}};
}

QList<QJsonObject> BuildStore::list() const {
    const std::lock_guard lock(mutex_);
    return finalized_.values();
}

std::optional<QJsonObject> BuildStore::find(const QString& build) const {
    const std::lock_guard lock(mutex_);
    const auto found = finalized_.find(build);
    return found == finalized_.end() ? std::nullopt : std::optional(*found);
}

Reply BuildStore::manifest(const QString& build) const {
    if (!find(build)) {
        return unknownBuild(build);
    }
    const auto manifest = readJson(folder_.filePath(*fileNameFor(build) + "/build.json"));
    if (!manifest) {
        return Refusal{500, QString("cannot read build '%1'").arg(build)};
    }
    return *manifest;
}

Reply BuildStore::file(const QString& build, const QString& path) const {
    if (!find(build)) {
        return unknownBuild(build);
    }
    const QString file = folder_.filePath(*fileNameFor(build) + "/files/" + path);
    if (!files::isSafeRelativePath(path.toStdString()) || !QFileInfo(file).isFile()) {
        return Refusal{404, QString("no file '%1' in build '%2'").arg(path, build)};
    }
    return FileBytes{file};
}

}  // namespace quorvelle::devserver
