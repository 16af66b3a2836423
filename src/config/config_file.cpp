#include "config/config_file.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QStandardPaths>
#include <optional>

#include "config/config_document.h"
#include "files/save_file.h"

namespace quorvelle::config {

namespace {

QString folder() {
    const QString chosen = qEnvironmentVariable("QUORVELLE_CONFIG_DIR");
    return chosen.isEmpty() ? QStandardPaths::writableLocation(QStandardPaths::AppConfigLocation)
                            : chosen;
}

/// The file's bytes, or nothing when it cannot be read to its end.
std::optional<QByteArray> readBytes() {
    QFile file(path());
    if (!file.open(QIODevice::ReadOnly)) {
        return std::nullopt;
    }
    const QByteArray bytes = file.readAll();
    return file.error() == QFileDevice::NoError ? std::optional(bytes) : std::nullopt;
}

/// Makes sure that replacing the file loses nothing.
bool mayReplaceFile() {
    if (!QFileInfo::exists(path())) {
        return true;
    }
    const std::optional<QByteArray> bytes = readBytes();
    if (!bytes) {
        return false;
    }
    return QJsonDocument::fromJson(*bytes).isObject() ||
           saveWhole(path() + QStringLiteral(".corrupt"), *bytes, Access::kOwnerOnly);
}

}  // namespace

QString path() {
    return folder() + QStringLiteral("/config.json");
}

QJsonObject load() {
    return migrated(QJsonDocument::fromJson(readBytes().value_or(QByteArray())).object());
}

bool save(const QJsonObject& document) {
    return QDir().mkpath(folder()) && mayReplaceFile() &&
           saveWhole(path(), QJsonDocument(document).toJson(QJsonDocument::Indented),
                     Access::kOwnerOnly);
}

Change::Change() {
    locked = QDir().mkpath(folder()) &&
             lock.acquire(path() + QStringLiteral(".lock")) == ProcessLock::Outcome::kHeld;
    document = load();
}

bool Change::save() {
    return locked && config::save(document);
}

QString couldNotWrite() {
    return QStringLiteral("could not write %1").arg(QDir::toNativeSeparators(path()));
}

}  // namespace quorvelle::config
