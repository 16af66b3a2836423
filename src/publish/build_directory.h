#pragma once

#include <QString>
#include <QStringList>

namespace quorvelle {

/// What of a directory makes a build.
struct BuildFiles {
    /// Absolute paths, sorted by path (case-sensitive, by UTF-16 code unit).
    QStringList files;
    /// Why there is no telling all of them, or none may be published; else empty.
    QString refusal;
};

/// The files of a directory that make a build: all regular files in it and below. Hidden
/// files, all below hidden folders and everything behind a symbolic link to a folder stay
/// out. A link to a file stands for its content, be it that of a hidden file, as long as the
/// file is in the directory or below; one that leads out of it, or nowhere, is a refusal,
/// and so is a folder that cannot be listed or a name that is no text.
BuildFiles buildFiles(const QString& directory);

/// "cannot open" and the path.
QString cannotOpen(const QString& path);

}  // namespace quorvelle
