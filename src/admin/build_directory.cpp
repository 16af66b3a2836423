#include "admin/build_directory.h"

#include <QDir>
#include <QDirIterator>
#include <QFileInfo>

namespace quorvelle {

QStringList buildFiles(const QString& directory) {
    QStringList files;
    QDirIterator entries(QDir(directory).absolutePath(), QDir::Files, QDirIterator::Subdirectories);
    while (entries.hasNext()) {
        entries.next();
        if (entries.fileInfo().isFile()) {
            files.append(entries.filePath());
        }
    }
    files.sort(Qt::CaseSensitive);
    return files;
}

}  // namespace quorvelle
