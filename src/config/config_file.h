#pragma once

#include <QJsonObject>
#include <QString>

#include "files/process_lock.h"

/// The client's one configuration file, config.json: indented JSON in UTF-8,
/// readable by its owner alone. Its document is described in config_document.h.

namespace quorvelle::config {

/// The file's full path: in the folder named by QUORVELLE_CONFIG_DIR when that is
/// set and not empty, else in the user's application configuration folder.
QString path();

/// Reads the file and returns its document, migrated. A file that is missing,
/// unreadable or no JSON object counts as an empty document.
QJsonObject load();

/// Writes the whole document in place of the old one, making the folder when it is
/// missing. What stood there and could not be parsed is first kept beside as
/// config.json.corrupt; what cannot be read is never overwritten. False when
/// anything failed; the old file then stands.
bool save(const QJsonObject& document);

/// One change of the configuration: it is loaded under a lock between processes,
/// which is held until the object ends, so that commands running at once lose
/// nothing of each other's changes.
class Change {
public:
    /// Takes the lock and loads `document`.
    Change();

    /// The document to change.
    QJsonObject document;

    /// Saves `document`; false also when no lock could be had.
    bool save();

private:
    ProcessLock lock;
    bool locked = false;
};

/// The error text for a configuration that could not be saved, naming the file.
QString couldNotWrite();

}  // namespace quorvelle::config
