#pragma once

#include <QByteArray>
#include <QString>
#include <memory>

namespace quorvelle {

/// Who may read a file that is written.
enum class Access {
    kDefault,    ///< what the platform gives new files
    kOwnerOnly,  ///< the owner alone, from the moment the file exists
};

/// Whether a saved file is on the disk when commit() returns.
enum class OnDisk {
    kNow,
    kLater,  ///< the caller flushes many at once, before anything relies on them
};

/// Writes a file so that a reader finds the old content or the whole new one,
/// never a part: the bytes go to a temporary file beside the target, which is
/// flushed to disk (or not yet) and takes the target's place in commit(). Destroyed without a
/// commit, it leaves the target untouched and removes the temporary file. A link in the
/// target's place stays; what it leads to is replaced (POSIX).
class SaveFile {
public:
    explicit SaveFile(const QString& path);
    ~SaveFile();
    SaveFile(const SaveFile&) = delete;
    SaveFile& operator=(const SaveFile&) = delete;

    /// Makes the temporary file. False when the folder is missing or refuses it.
    bool open(Access access = Access::kDefault);

    /// Appends bytes. After a failure commit() fails too.
    bool write(const QByteArray& bytes);

    /// Puts the file in place, on Windows also that of a read-only file, and waits there
    /// for up to 2 s for others to close it. False when any write, the last flush or the
    /// rename failed; the target is then what it was.
    bool commit(OnDisk when = OnDisk::kNow);

private:
    /// The platform's temporary file.
    struct File;
    std::unique_ptr<File> file;
};

/// The same in one call, after removeLeftovers(). The folder must exist.
bool saveWhole(const QString& path, const QByteArray& bytes, Access access = Access::kDefault);

/// Removes the temporary files that killed saves left beside a file: saves of it, and of
/// others whose names begin with its name. None of these may be under way.
void removeLeftovers(const QString& path);

/// For the platforms' parts: the file that a save replaces, links resolved.
QString savedPath(const QString& path);

/// For the platforms' parts: a new name beside the target, which nobody else gives to a
/// file of theirs.
QString temporaryPath(const QString& target);

}  // namespace quorvelle
