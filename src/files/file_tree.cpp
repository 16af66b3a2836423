#include "files/file_tree.h"

#include <QDir>
#include <QFileInfo>
#include <filesystem>

#include "files/disk.h"
#include "files/utf8_path.h"

namespace quorvelle {

namespace {

std::filesystem::path nativePath(const QString& path) {
    return files::utf8Path(QFileInfo(path).absoluteFilePath().toStdString());
}

qsizetype filesBelow(const std::filesystem::path& directory) {
    qsizetype count = 0;
    for (const std::filesystem::path& entry : files::entriesOf(directory)) {
        const files::EntryKind kind = files::entryKind(entry);
        count += kind == files::EntryKind::kDirectory ? filesBelow(entry)
                 : kind == files::EntryKind::kFile    ? 1
                                                      : 0;
    }
    return count;
}

}  // namespace

bool entryExists(const QString& path) {
    return files::entryKind(nativePath(path)) != files::EntryKind::kNothing;
}

bool directoryExists(const QString& path) {
    return QFileInfo(path).isDir();
}

QString behindLink(const QString& path) {
    const std::filesystem::path given = nativePath(QDir::cleanPath(path));
    const std::filesystem::path real = files::behindLink(given);
    return real == given
               ? path
               : QDir::fromNativeSeparators(QString::fromStdString(files::utf8Text(real)));
}

bool isMountPoint(const QString& directory) {
    return files::isMountPoint(nativePath(QDir::cleanPath(directory)));
}

bool makeDirectoriesBelow(const QString& directory, const QString& relative) {
    std::filesystem::path path = nativePath(directory);
    if (!files::isRealDirectory(path)) {
        return false;
    }
    // One at a time, so that none is made where the one above it has gone.
    for (const QString& part : relative.split(u'/', Qt::SkipEmptyParts)) {
        path /= files::utf8Path(part.toStdString());
        if (!files::isRealDirectory(path) && !files::makeDirectory(path)) {
            return false;
        }
    }
    return true;
}

qsizetype countFiles(const QString& directory) {
    const std::filesystem::path path = nativePath(directory);
    return files::isRealDirectory(path) ? filesBelow(files::openable(path)) : 0;
}

bool isPlainFile(const QString& path) {
    return files::entryKind(nativePath(path)) == files::EntryKind::kFile;
}

bool isPlainDirectory(const QString& path) {
    return files::isRealDirectory(nativePath(path));
}

bool isEmptyDirectory(const QString& path) {
    return files::isEmptyDirectory(nativePath(path));
}

bool flushFolder(const QString& path) {
    return files::flushFolder(nativePath(path));
}

bool flushTree(const QString& path) {
    return files::flushTree(nativePath(path));
}

bool renameEntry(const QString& from, const QString& to) {
    return !files::renameEntry(nativePath(from), nativePath(to));
}

bool removeTree(const QString& path) {
    return files::removeTree(nativePath(path));
}

}  // namespace quorvelle
