#pragma once

#include <QByteArray>
#include <QDir>
#include <QJsonObject>
#include <QLockFile>
#include <QString>
#include <QTemporaryFile>
#include <filesystem>
#include <memory>
#include <optional>
#include <system_error>

namespace quorvelle::devserver {

/// The folder all state lives in, held by one server at a time. Uploads grow
/// in its "tmp" folder, which starts out empty, until a store takes them over.
class DataFolder {
public:
    explicit DataFolder(const QString& path);

    /// Creates the folder and locks it until this object goes. What stands in
    /// the way comes back as a sentence.
    std::optional<QString> open();

    const QDir& dir() const { return root; }

    /// An empty file that is removed again unless a store takes it over. Null
    /// when the disk refuses one. Safe to call from any thread.
    std::unique_ptr<QTemporaryFile> newTemporaryFile() const;

private:
    QDir root;
    QLockFile lock;
};

/// The JSON object a file holds; nothing when it cannot be read as one.
std::optional<QJsonObject> readJson(const QString& path);

/// Who may read a new file.
enum class Readers { kAnyone, kOwner };

/// Replaces a file as a whole, so that a crash leaves the old or the new one.
bool writeWhole(const QString& path, const QByteArray& bytes, Readers readers = Readers::kAnyone);
bool writeJson(const QString& path, const QJsonObject& object, Readers readers = Readers::kAnyone);

/// Moves a completely written temporary file to a path on the same disk, in place of what
/// is there, and keeps it; why that failed, if it did. Written bytes must be flushed.
std::error_code takeOver(QTemporaryFile& file, const QString& path);

/// The file name that stands for a build or channel on disk: percent-encoded outside
/// [A-Za-z0-9_-], so that no name can leave its folder. Nothing when the name is too long
/// for a file system to hold.
std::optional<QString> fileNameFor(const QString& name);

/// The path in the form the standard library takes on every platform.
std::filesystem::path nativePath(const QString& path);

/// The present time in UTC as ISO 8601 with whole seconds.
QString timestamp();

}  // namespace quorvelle::devserver
