#include "publish/build_directory.h"

#include <QDir>
#include <QFileInfo>

namespace quorvelle {

namespace {

/// Windows shortcuts ("x.lnk") are files like all others, although Qt takes them for links.
bool isFile(const QFileInfo& entry) {
    return entry.isShortcut() || entry.isFile();
}

void addFiles(const QDir& directory, QStringList& files) {
    for (const QFileInfo& entry :
         directory.entryInfoList(QDir::Files | QDir::Dirs | QDir::System | QDir::NoDotAndDotDot)) {
        if (isFile(entry)) {
            files.append(entry.filePath());
        } else if (entry.isDir() && !entry.isSymLink() && !entry.isJunction()) {
            addFiles(QDir(entry.filePath()), files);
        }
    }
}

}  // namespace

QStringList buildFiles(const QString& directory) {
    QStringList files;
    addFiles(QDir(QDir(directory).absolutePath()), files);
    files.sort(Qt::CaseSensitive);
    return files;
}

}  // namespace quorvelle
