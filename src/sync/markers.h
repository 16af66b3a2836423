#pragma once

#include <QString>

/// The marker files of an install directory in the state folder, written whole: JSON
/// objects, indented, but for one plain text. A missing or unreadable marker reads as an
/// empty record.

namespace quorvelle {

/// ".installed.json": what the install directory holds.
struct InstalledMarker {
    QString build;
    QString channel;
};

/// ".staged.json": what waits in the staging directory to be put in place.
struct StagedMarker {
    QString build;
    QString channel;
    /// Bytes of the build's files; 0 where they were not counted.
    qint64 totalSize = 0;
};

InstalledMarker readInstalledMarker(const QString& dir);
StagedMarker readStagedMarker(const QString& dir);

/// False when the marker could not be written; an older one then still stands.
bool writeInstalledMarker(const QString& dir, const InstalledMarker& marker);
bool writeStagedMarker(const QString& dir, const StagedMarker& marker);

/// True when no staged marker stands afterwards.
bool removeStagedMarker(const QString& dir);

/// ".staging.build": the id of the build that the chunk engine assembles in the staging
/// directory, so that another run of it goes on there. Empty where none is noted.
QString readStagingBuild(const QString& dir);
bool writeStagingBuild(const QString& dir, const QString& build);

/// True when nothing stands there afterwards.
bool removeStagingBuild(const QString& dir);

}  // namespace quorvelle
