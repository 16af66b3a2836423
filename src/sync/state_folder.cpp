#include "sync/state_folder.h"

#include <QDir>
#include <QFileInfo>

#include "files/file_tree.h"

namespace quorvelle {

QString statePath(const QString& dir, const char* suffix) {
    const QFileInfo install(QDir::cleanPath(dir));
    const QDir folder(QDir(install.absolutePath()).absoluteFilePath(QStringLiteral(".quorvelle")));
    folder.mkpath(QStringLiteral("."));
    return folder.absoluteFilePath(install.fileName() + QLatin1String(suffix));
}

void migrateLegacyState(const QString& dir) {
    for (const char* suffix : {kInstalledMarkerSuffix, kStagedMarkerSuffix, kStagingBuildSuffix,
                               kStagingSuffix, kOldSuffix}) {
        const QString legacy = QDir::cleanPath(dir) + QLatin1String(suffix);
        const QString current = statePath(dir, suffix);
        if (entryExists(legacy) && !entryExists(current)) {
            renameEntry(legacy, current);
        }
    }
}

}  // namespace quorvelle
