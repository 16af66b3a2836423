#include "sync/file_tree.h"

#include <QFileInfo>
#include <filesystem>

#include "tide/disk.h"
#include "tide/utf8_path.h"

namespace quorvelle {

namespace {

std::filesystem::path nativePath(const QString& path) {
    return tide::utf8Path(QFileInfo(path).absoluteFilePath().toStdString());
}

}  // namespace

bool entryExists(const QString& path) {
    return tide::entryKind(nativePath(path)) != tide::EntryKind::kNothing;
}

bool directoryExists(const QString& path) {
    return QFileInfo(path).isDir();
}

bool renameEntry(const QString& from, const QString& to) {
    return !tide::renameEntry(nativePath(from), nativePath(to));
}

bool removeTree(const QString& path) {
    return tide::removeTree(nativePath(path));
}

}  // namespace quorvelle
