#include "sync/file_tree.h"

#include <QFileInfo>
#include <filesystem>
#include <system_error>

namespace quorvelle {

namespace {

std::filesystem::path nativePath(const QString& path) {
    return QFileInfo(path).filesystemFilePath();
}

}  // namespace

bool entryExists(const QString& path) {
    const QFileInfo entry(path);
    return entry.exists() || entry.isSymLink();
}

bool directoryExists(const QString& path) {
    return QFileInfo(path).isDir();
}

bool renameEntry(const QString& from, const QString& to) {
    std::error_code error;
    std::filesystem::rename(nativePath(from), nativePath(to), error);
    return !error;
}

bool removeTree(const QString& path) {
    std::error_code error;
    std::filesystem::remove_all(nativePath(path), error);
    return !error;
}

}  // namespace quorvelle
