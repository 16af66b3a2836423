#include "files/file_tree.h"

#include <QFileInfo>
#include <filesystem>

#include "files/disk.h"
#include "files/utf8_path.h"

namespace quorvelle {

namespace {

std::filesystem::path nativePath(const QString& path) {
    return files::utf8Path(QFileInfo(path).absoluteFilePath().toStdString());
}

}  // namespace

bool entryExists(const QString& path) {
    return files::entryKind(nativePath(path)) != files::EntryKind::kNothing;
}

bool directoryExists(const QString& path) {
    return QFileInfo(path).isDir();
}

bool renameEntry(const QString& from, const QString& to) {
    return !files::renameEntry(nativePath(from), nativePath(to));
}

bool removeTree(const QString& path) {
    return files::removeTree(nativePath(path));
}

}  // namespace quorvelle
