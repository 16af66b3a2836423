#pragma once

#include <QJsonObject>
#include <QString>
#include <functional>

/// The client's one configuration file, config.json: indented JSON in UTF-8,
/// readable by its owner alone. Its document is described in config_document.h.

namespace quorvelle::config {

/// Whether the file has a folder: QUORVELLE_CONFIG_DIR or XDG_CONFIG_HOME names one, or
/// the home folder is known. Without it everything below acts as on an empty
/// configuration that cannot be saved.
bool hasFolder();

/// The error text where the home folder would be needed and cannot be found.
QString noHomeFolder();

/// The file's full path: in the folder named by QUORVELLE_CONFIG_DIR when that is
/// set and not empty, else in the user's application configuration folder.
QString path();

/// Reads the file and returns its document, migrated. A file that is missing,
/// unreadable or no JSON object counts as an empty document; of the latter two a
/// terminal is told, once in a process.
QJsonObject load();

/// Writes the whole document in place of the old one, making the folder when it is
/// missing, and waits until it is on the disk. What stood there is first kept beside as
/// config.json.corrupt ("-2", "-3", ... where that is taken) when it could not be parsed or
/// its migration dropped something, of which a terminal is told; what cannot be read is
/// never overwritten. What killed saves left behind is removed. False when anything failed;
/// the old file then stands.
bool save(const QJsonObject& document);

/// How a change of the configuration ended.
enum class Changed {
    kSaved,
    kNotSaved,   ///< the file could not be locked, read or written; it is as it was
    kNotWanted,  ///< the edit said so
};

/// Loads the document, lets `edit` change it and saves it when that returns true, all under
/// a lock between processes, so that commands running at once lose nothing of each other's
/// changes. The lock is given up before this returns and before anything is printed; `edit`
/// prints nothing. It is not called where the file cannot be read.
Changed change(const std::function<bool(QJsonObject& document)>& edit);

/// The error text for a configuration that could not be saved, naming the file.
QString couldNotWrite();

}  // namespace quorvelle::config
