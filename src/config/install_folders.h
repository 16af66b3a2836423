#pragma once

#include <QString>
#include <QStringList>
#include <optional>

/// Which folders builds are installed in, and that no two of them meet. Pure functions on
/// paths as the configuration stores them.

namespace quorvelle::config {

/// Whether two install directories are one, or one lies inside the other, so that each
/// sync of one would destroy what the other installed. On Windows case does not matter. An
/// empty path meets nothing.
bool foldersMeet(const QString& one, const QString& other);

/// The folder for a channel below an install root: the channel's name, or that with "-2",
/// "-3", ..., so that it meets none of the taken folders. Nothing when the root itself lies
/// in one of them.
std::optional<QString> freeFolder(const QString& root, const QString& channel,
                                  const QStringList& taken);

/// The error text for a channel without such a folder.
QString noFreeFolder(const QString& server, const QString& channel, const QString& root);

}  // namespace quorvelle::config
