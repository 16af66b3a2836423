#include "sync/state_folder.h"

#include <QDir>
#include <QFileInfo>
#include <algorithm>

#include "files/file_tree.h"
#include "files/safe_path.h"

namespace quorvelle {

namespace {

constexpr const char* kLegacyMarkers[] = {kStagingBuildSuffix, kStagedMarkerSuffix,
                                          kInstalledMarkerSuffix};
constexpr const char* kLegacyDirectories[] = {kOldSuffix, kStagingSuffix};

QString comparable(const QString& path) {
    return QString::fromStdString(files::comparablePath(path.toStdString()));
}

/// Whether the directory at `inner` is the one at `outer` or lies below it, as they are
/// written or where links lead to.
bool isWithin(const QString& inner, const QString& outer) {
    const auto within = [](const QString& path, const QString& folder) {
        return !folder.isEmpty() && (comparable(path) + u'/').startsWith(comparable(folder) + u'/');
    };
    const QFileInfo in(inner);
    const QFileInfo out(outer);
    return within(QDir::cleanPath(in.absoluteFilePath()),
                  QDir::cleanPath(out.absoluteFilePath())) ||
           within(in.canonicalFilePath(), out.canonicalFilePath());
}

QDir stateFolderOf(const QFileInfo& install) {
    return QDir(QDir(install.absolutePath()).absoluteFilePath(QStringLiteral(".quorvelle")));
}

void moveLegacy(const QString& dir, const char* suffix) {
    const QString current = statePath(dir, suffix);
    if (!entryExists(current)) {
        renameEntry(legacyPath(dir, suffix), current);
    }
}

}  // namespace

QString statePath(const QString& dir, const char* suffix) {
    const QFileInfo install(QDir::cleanPath(dir));
    const QDir folder = stateFolderOf(install);
    folder.mkpath(QStringLiteral("."));
    return folder.absoluteFilePath(install.fileName() + QLatin1String(suffix));
}

bool hasStateFolder(const QString& dir) {
    return stateFolderOf(QFileInfo(QDir::cleanPath(dir))).exists();
}

QString legacyPath(const QString& dir, const char* suffix) {
    return QDir::cleanPath(dir) + QLatin1String(suffix);
}

void migrateLegacyState(const QString& dir, const QStringList& installDirectories) {
    if (std::none_of(std::begin(kLegacyMarkers), std::end(kLegacyMarkers),
                     [&](const char* suffix) { return isPlainFile(legacyPath(dir, suffix)); })) {
        return;
    }
    // The markers go last: as long as one of them stands, a sync that comes after a killed
    // one knows that the directories are state.
    for (const char* suffix : kLegacyDirectories) {
        const QString legacy = legacyPath(dir, suffix);
        const bool taken =
            std::any_of(installDirectories.begin(), installDirectories.end(),
                        [&](const QString& install) { return isWithin(install, legacy); });
        if (isPlainDirectory(legacy) && !taken) {
            moveLegacy(dir, suffix);
        }
    }
    for (const char* suffix : kLegacyMarkers) {
        if (isPlainFile(legacyPath(dir, suffix))) {
            moveLegacy(dir, suffix);
        }
    }
}

}  // namespace quorvelle
