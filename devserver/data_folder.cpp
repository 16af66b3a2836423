#include "data_folder.h"

#include <QDateTime>
#include <QFile>
#include <QJsonDocument>
#include <QSaveFile>

namespace quorvelle::devserver {

DataFolder::DataFolder(const QString& path)
    : dir_(QDir(path).absolutePath()), lock_(dir_.filePath("lock")) {
    // A server may run for days; only the end of its process frees the lock.
    lock_.setStaleLockTime(0);
}

std::optional<QString> DataFolder::open() {
    if (!dir_.mkpath(".")) {
        return QString("cannot create the data folder '%1'").arg(dir_.path());
    }
    if (!lock_.tryLock(0)) {
        return lock_.error() == QLockFile::LockFailedError
                   ? QString("another server is using the data folder '%1'").arg(dir_.path())
                   : QString("cannot write to the data folder '%1'").arg(dir_.path());
    }
    QDir(dir_.filePath("tmp")).removeRecursively();
    for (const char* name : {"tmp", "builds", "channels", "chunks", "tide"}) {
        if (!dir_.mkpath(name)) {
            return QString("cannot create '%1'").arg(dir_.filePath(name));
        }
    }
    return std::nullopt;
}

std::unique_ptr<QTemporaryFile> DataFolder::newTemporaryFile() const {
    auto file = std::make_unique<QTemporaryFile>(dir_.filePath("tmp/XXXXXX"));
    if (!file->open()) {
        return nullptr;
    }
    return file;
}

std::optional<QJsonObject> readJson(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        return std::nullopt;
    }
    const QJsonDocument document = QJsonDocument::fromJson(file.readAll());
    if (!document.isObject()) {
        return std::nullopt;
    }
    return document.object();
}

bool writeWhole(const QString& path, const QByteArray& bytes, Readers readers) {
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly)) {
        return false;
    }
    // Before the first byte is in it, not after.
    if (readers == Readers::kOwner && !file.setPermissions(QFile::ReadOwner | QFile::WriteOwner)) {
        return false;
    }
    return file.write(bytes) == bytes.size() && file.commit();
}

bool writeJson(const QString& path, const QJsonObject& object, Readers readers) {
    return writeWhole(path, QJsonDocument(object).toJson(), readers);
}

std::filesystem::path nativePath(const QString& path) {
    return path.toStdU16String();
}

QString timestamp() {
    return QDateTime::currentDateTimeUtc().toString(Qt::ISODate);
}

}  // namespace quorvelle::devserver
