#pragma once

#include <QString>
#include <QStringList>

/// Where the state of an install directory lies: in the folder ".quorvelle" beside
/// it, on the same volume, so that builds change place by plain renames. Entries of
/// directories that share a parent are told apart by the directory's name.

namespace quorvelle {

inline constexpr char kInstalledMarkerSuffix[] = ".installed.json";
inline constexpr char kStagedMarkerSuffix[] = ".staged.json";
inline constexpr char kStagingBuildSuffix[] = ".staging.build";
inline constexpr char kStagingSuffix[] = ".staging";
inline constexpr char kOldSuffix[] = ".old";
/// Of directories that were in the way and that nothing vouched for, see swap.h.
inline constexpr char kReplacedSuffix[] = ".replaced";
/// The record of a swap, see swap.h.
inline constexpr char kSwapSuffix[] = ".swap";
/// The lock of the sync that is running.
inline constexpr char kLockSuffix[] = ".lock";

/// The absolute path of the state entry of `dir` with that suffix. Makes the state
/// folder, parents included, when it does not exist; a failure shows when the entry
/// is used.
QString statePath(const QString& dir, const char* suffix);

/// Whether the state folder of `dir` stands already.
bool hasStateFolder(const QString& dir);

/// Where earlier releases kept that entry: directly beside the install directory.
QString legacyPath(const QString& dir, const char* suffix);

/// Moves state entries of earlier releases, which stood directly beside the install
/// directory, into the state folder, provided that one of the marker files is among them:
/// anybody may have an "app.old". An entry that is one of `installDirectories`, or holds
/// one, stays where it is. An entry that is already in the state folder wins; a move that
/// fails is ignored.
void migrateLegacyState(const QString& dir, const QStringList& installDirectories);

}  // namespace quorvelle
