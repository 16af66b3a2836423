#pragma once

#include <QString>
#include <optional>

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

/// Whether an installed marker vouches for the directory. Makes no state folder.
bool isInstalled(const QString& dir);

StagedMarker readStagedMarker(const QString& dir);

/// False when the marker could not be written; an older one then still stands.
bool writeInstalledMarker(const QString& dir, const InstalledMarker& marker);
bool writeStagedMarker(const QString& dir, const StagedMarker& marker);

/// True when no staged marker stands afterwards.
bool removeStagedMarker(const QString& dir);

/// ".swap": what a swap is about to do, written before it touches the install directory,
/// for whoever comes after a process that ended in the middle of it.
struct SwapRecord {
    /// What is put in place. Empty in a record of an earlier release, which held nothing.
    QString build = {};
    QString channel = {};
    /// Suffix of the state entry that the former content of the install directory takes:
    /// ".old", ".replaced", ".replaced-2", ...; empty where there is none.
    QString previous = {};
    /// Nothing vouches for the former content, which may be a person's: it stays.
    bool keep = false;
    /// The renames may have begun. Otherwise none is under way, and the record is there
    /// for `keep`, or because an ".old" stands that is no former content.
    bool moving = false;
};

/// Nothing when no record stands. A record that cannot be read is one of an earlier
/// release: a swap under way, to ".old".
std::optional<SwapRecord> readSwapRecord(const QString& dir);

/// False when it could not be written; an older one then still stands.
bool writeSwapRecord(const QString& dir, const SwapRecord& record);

/// True when no record stands afterwards.
bool removeSwapRecord(const QString& dir);

/// ".staging.build": the id of the build that the chunk engine assembles in the staging
/// directory, so that another run of it goes on there. Empty where none is noted.
QString readStagingBuild(const QString& dir);
bool writeStagingBuild(const QString& dir, const QString& build);

/// True when nothing stands there afterwards.
bool removeStagingBuild(const QString& dir);

}  // namespace quorvelle
