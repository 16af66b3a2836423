#include "sync/swap.h"

#include <QFileInfo>

#include "files/file_tree.h"
#include "files/free_name.h"
#include "sync/leftovers.h"
#include "sync/state_folder.h"

namespace quorvelle {

namespace {

/// Where the former content of the install directory goes, or went.
QString previousPath(const QString& dir, const SwapRecord& swap) {
    return statePath(dir, swap.previous.toUtf8().constData());
}

QString stateFolder(const QString& dir) {
    return QFileInfo(statePath(dir, "")).path();
}

/// Both folders whose names a swap changes.
bool flushNames(const QString& dir) {
    const QString folder = stateFolder(dir);
    return flushFolder(folder) && flushFolder(QFileInfo(folder).path());
}

/// Whether the content of the install directory came from here.
bool isVouchedFor(const QString& dir) {
    // The swap before this one, which was blocked or cut short, has asked already. By now
    // a staged marker may stand that is its own.
    if (const auto before = readSwapRecord(dir)) {
        return !before->keep;
    }
    for (const char* suffix : {kInstalledMarkerSuffix, kStagedMarkerSuffix}) {
        if (isPlainFile(statePath(dir, suffix)) || isPlainFile(legacyPath(dir, suffix))) {
            return true;
        }
    }
    return false;
}

SwapRecord plannedSwap(const QString& dir, const StagedMarker& staged) {
    SwapRecord swap{.build = staged.build, .channel = staged.channel, .moving = true};
    if (directoryExists(dir)) {
        swap.keep = keepsContent(dir);
        const auto isTaken = [&](const QString& suffix) {
            return entryExists(statePath(dir, suffix.toUtf8().constData()));
        };
        swap.previous = swap.keep ? freeName(QLatin1String(kReplacedSuffix), isTaken)
                                  : QLatin1String(kOldSuffix);
    }
    return swap;
}

/// Frees the name that the installed build is to take.
bool removeLeftover(const QString& dir, const SwapRecord& swap) {
    // Without an install directory ".old" may be the only copy; it then goes after the
    // staged build is in place.
    if (swap.keep || swap.previous.isEmpty() || !entryExists(previousPath(dir, swap))) {
        return true;
    }
    return discardTree(dir, kOldSuffix);
}

/// Writes down what is going to happen. False when it must not happen.
bool announce(const QString& dir, const SwapRecord& swap, const StagedMarker& staged) {
    // The record is on the disk before the staged marker: that one vouches for whatever
    // stands in the install directory, so alone it would give a person's files away.
    const bool noted = writeSwapRecord(dir, swap) && flushNames(dir);
    if (!noted && swap.keep) {
        return false;
    }
    // A marker that cannot be written, or that a power cut takes, costs a download and no
    // more: the record names the build as well.
    writeStagedMarker(dir, staged);
    return noted;
}

/// Takes an install directory that was moved away back.
void moveBack(const QString& dir, const SwapRecord& swap) {
    renameEntry(previousPath(dir, swap), dir);
    // The record's change must not reach the disk before its cause.
    flushNames(dir);
}

/// Ends the record of a swap that was not made.
void standDown(const QString& dir, SwapRecord swap) {
    const bool away =
        !swap.previous.isEmpty() && !entryExists(dir) && directoryExists(previousPath(dir, swap));
    if (away) {
        return;  // The next sync tries to bring it back.
    }
    // With the staged marker that waits it has to be remembered whose files are in the way,
    // and that an ".old" standing now is nobody's former content.
    if (swap.keep || entryExists(statePath(dir, kOldSuffix))) {
        swap.moving = false;
        writeSwapRecord(dir, swap);
    } else {
        removeSwapRecord(dir);
    }
}

/// The two renames.
SwapResult moveIntoPlace(const QString& dir, const SwapRecord& swap) {
    const bool movesAway = !swap.previous.isEmpty();
    if (movesAway && !renameEntry(dir, previousPath(dir, swap))) {
        return SwapResult::kInUse;
    }
    // An old build may get lost by a power cut that brings only the second rename to the
    // disk, since the new build is whole then; a person's files may not.
    const bool mayGoOn = !swap.keep || flushNames(dir);
    if (!mayGoOn || !renameEntry(statePath(dir, kStagingSuffix), dir)) {
        if (movesAway) {
            moveBack(dir, swap);
        }
        return SwapResult::kNotMovable;
    }
    return SwapResult::kSwapped;
}

/// What is left to do once the staged build stands in the install directory, also when a
/// process before this one put it there. Any part of it may be done already.
SwapResult complete(const QString& dir, SwapRecord swap) {
    // The renames come to the disk before anything that relies on them: the old build is
    // the only other one, and the installed marker tells that nothing has to be done.
    if (!flushNames(dir)) {
        return SwapResult::kNotRecorded;
    }
    const bool recorded =
        swap.build.isEmpty() || writeInstalledMarker(dir, {swap.build, swap.channel});
    // The marker comes to the disk before ".old" is touched and its witnesses go: while it
    // names another build, recovery may take ".old" for a whole build.
    if (recorded && !flushFolder(stateFolder(dir))) {
        return SwapResult::kNotRecorded;
    }
    const bool leftover = !discardTree(dir, kOldSuffix);
    swap.moving = false;
    swap.keep = false;
    if (!recorded) {
        // It also vouches for the build that stands here without its marker.
        writeSwapRecord(dir, swap);
        return SwapResult::kNotRecorded;
    }
    // The record goes last: without it, an ".old" beside a staged marker would be taken for
    // the installed build.
    if (!removeStagedMarker(dir) || !flushFolder(stateFolder(dir))) {
        return SwapResult::kSwapped;  // The next sync completes it.
    }
    if (leftover) {
        writeSwapRecord(dir, swap);
    } else {
        removeSwapRecord(dir);
    }
    return SwapResult::kSwapped;
}

/// Whether ".old" still is the build that was installed, as far as can be told when
/// neither the install directory nor staging stands.
bool isOldWhole(const QString& dir, const SwapRecord& swap) {
    return readInstalledMarker(dir).build != swap.build;
}

/// A record that waits speaks of an ".old" that could not be removed, or of the missing
/// installed marker of the build that is in place.
void recoverWaiting(const QString& dir) {
    if (directoryExists(dir) && discardTree(dir, kOldSuffix) &&
        isPlainFile(statePath(dir, kInstalledMarkerSuffix))) {
        removeSwapRecord(dir);
    }
}

void recoverUnderWay(const QString& dir, SwapRecord swap, bool staged) {
    if (!staged && !swap.keep && !isOldWhole(dir, swap)) {
        swap.previous.clear();
    }
    if (!swap.previous.isEmpty() && !entryExists(dir) && directoryExists(previousPath(dir, swap))) {
        moveBack(dir, swap);
    }
    standDown(dir, swap);
}

/// Releases before the record wrote a staged marker and renamed.
void recoverUnrecorded(const QString& dir) {
    const QString old = statePath(dir, kOldSuffix);
    if (!readStagedMarker(dir).build.isEmpty() && !entryExists(dir) && directoryExists(old)) {
        renameEntry(old, dir);
    }
}

}  // namespace

bool keepsContent(const QString& dir) {
    return directoryExists(dir) && !isEmptyDirectory(dir) && !isVouchedFor(dir);
}

SwapOutcome swapInStaged(const QString& dir, const StagedMarker& staged,
                         const std::function<bool()>& mayGoOn) {
    const QString staging = statePath(dir, kStagingSuffix);
    if (!directoryExists(staging)) {
        // The renames would only be taken back, and a record of them would read as that of a
        // swap that was made. Nor is there anything that a staged marker could speak of.
        return {SwapResult::kNotMovable};
    }
    const SwapRecord swap = plannedSwap(dir, staged);
    const bool isFree = removeLeftover(dir, swap);
    // Nothing may say that a build waits before all of it, and its name, is on the disk. With
    // the record there and the name not, the swap would pass for one that was made; and a
    // leftover would pass for the installed build.
    if (!flushTree(staging) || !flushNames(dir)) {
        return {SwapResult::kNotFlushed};
    }
    if (!isFree) {
        writeStagedMarker(dir, staged);
        return {SwapResult::kInUse};
    }
    SwapResult result = SwapResult::kNotMovable;
    if (announce(dir, swap, staged)) {
        result = !mayGoOn || mayGoOn() ? moveIntoPlace(dir, swap) : SwapResult::kWrittenInto;
    }
    if (result != SwapResult::kSwapped) {
        standDown(dir, swap);
        if (result == SwapResult::kWrittenInto) {
            withdrawStaged(dir);
        }
        return {result};
    }
    result = complete(dir, swap);
    return {result, swap.keep ? previousPath(dir, swap) : QString()};
}

bool withdrawStaged(const QString& dir) {
    if (!entryExists(statePath(dir, kStagedMarkerSuffix))) {
        return true;
    }
    return removeStagedMarker(dir) && flushFolder(stateFolder(dir));
}

QString recoverSwap(const QString& dir) {
    const bool staged = entryExists(statePath(dir, kStagingSuffix));
    std::optional<SwapRecord> swap = readSwapRecord(dir);
    if (!swap) {
        recoverUnrecorded(dir);
        return {};
    }
    if (!swap->moving) {
        if (!swap->keep) {
            recoverWaiting(dir);
        }
        return {};
    }
    if (swap->build.isEmpty()) {
        const StagedMarker marker = readStagedMarker(dir);
        swap->build = marker.build;
        swap->channel = marker.channel;
    }
    // Staging leaves its name by the second rename alone. A person's files have left
    // theirs before; where they have not, somebody else took staging away.
    const bool inPlace =
        !staged && directoryExists(dir) && (!swap->keep || entryExists(previousPath(dir, *swap)));
    if (!inPlace) {
        recoverUnderWay(dir, *swap, staged);
        return {};
    }
    return complete(dir, *swap) == SwapResult::kSwapped && swap->keep ? previousPath(dir, *swap)
                                                                      : QString();
}

}  // namespace quorvelle
