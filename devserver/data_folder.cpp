#include "data_folder.h"

#include <QDateTime>
#include <QFile>
#include <QJsonDocument>
#include <QSaveFile>

namespace quorvelle::devserver {

namespace {

// Leaves room for a suffix below the usual limit of 255 bytes.
constexpr qsizetype kMaxFileNameLength = 240;

}  // namespace

DataFolder::DataFolder(const QString& path)
    : root(QDir(path).absolutePath()), lock(root.filePath(QStringLiteral("lock"))) {
    // A server may run for days; only the end of its process frees the lock.
    lock.setStaleLockTime(0);
}

std::optional<QString> DataFolder::open() {
    if (!root.mkpath(QStringLiteral("."))) {
        return QStringLiteral("cannot create the data folder '%1'").arg(root.path());
    }
    if (!lock.tryLock(0)) {
        return lock.error() == QLockFile::LockFailedError
                   ? QStringLiteral("another server is using the data folder '%1'").arg(root.path())
                   : QStringLiteral("cannot write to the data folder '%1'").arg(root.path());
    }
    QDir(root.filePath(QStringLiteral("tmp"))).removeRecursively();
    for (const QString& name :
         {QStringLiteral("tmp"), QStringLiteral("builds"), QStringLiteral("channels"),
          QStringLiteral("chunks"), QStringLiteral("tide"), QStringLiteral("backups")}) {
        if (!root.mkpath(name)) {
            return QStringLiteral("cannot create '%1'").arg(root.filePath(name));
        }
    }
    return std::nullopt;
}

std::unique_ptr<QTemporaryFile> DataFolder::newTemporaryFile() const {
    auto file = std::make_unique<QTemporaryFile>(root.filePath(QStringLiteral("tmp/XXXXXX")));
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

std::error_code takeOver(QTemporaryFile& file, const QString& path) {
    std::error_code error;
    std::filesystem::rename(nativePath(file.fileName()), nativePath(path), error);
    file.setAutoRemove(static_cast<bool>(error));
    return error;
}

std::optional<QString> fileNameFor(const QString& name) {
    const QByteArray encoded = name.toUtf8().toPercentEncoding({}, ".~");
    if (encoded.size() > kMaxFileNameLength) {
        return std::nullopt;
    }
    return QString::fromLatin1(encoded);
}

std::filesystem::path nativePath(const QString& path) {
    return path.toStdU16String();
}

QString timestamp() {
    return QDateTime::currentDateTimeUtc().toString(Qt::ISODate);
}

}  // namespace quorvelle::devserver
