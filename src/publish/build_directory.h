#pragma once

#include <QString>
#include <QStringList>

namespace quorvelle {

/// The files of a directory that make a build: absolute paths of all regular files in
/// it and below, sorted by path (case-sensitive, by UTF-16 code unit). Hidden files, all
/// below hidden folders and everything behind a symbolic link to a folder stay out.
QStringList buildFiles(const QString& directory);

}  // namespace quorvelle
