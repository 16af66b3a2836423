#include "sync/swap.h"

#include <QFile>

#include "files/file_tree.h"
#include "files/save_file.h"
#include "sync/leftovers.h"
#include "sync/markers.h"
#include "sync/state_folder.h"

namespace quorvelle {

SwapResult swapInStaged(const QString& dir) {
    const QString staging = statePath(dir, kStagingSuffix);
    const QString old = statePath(dir, kOldSuffix);
    const bool installed = directoryExists(dir);
    if (installed) {
        // Without an install directory it may be the only copy; it then goes after
        // the staged build is in place.
        discardTree(dir, kOldSuffix);
    }
    if (directoryExists(staging)) {
        saveWhole(statePath(dir, kSwapSuffix), {});
    }
    if (installed && !renameEntry(dir, old)) {
        return SwapResult::kInUse;
    }
    if (!renameEntry(staging, dir)) {
        if (installed) {
            renameEntry(old, dir);
        }
        return SwapResult::kNotMovable;
    }
    discardTree(dir, kOldSuffix);
    return SwapResult::kSwapped;
}

void endSwap(const QString& dir) {
    QFile::remove(statePath(dir, kSwapSuffix));
}

void recoverSwap(const QString& dir) {
    const StagedMarker staged = readStagedMarker(dir);
    const QString old = statePath(dir, kOldSuffix);
    const bool cutShort = entryExists(statePath(dir, kSwapSuffix));
    // Asked before anything comes back from ".old", which is not the staged build.
    const bool inPlace = !staged.build.isEmpty() && directoryExists(dir) &&
                         !entryExists(statePath(dir, kStagingSuffix));
    if ((cutShort || !staged.build.isEmpty()) && !entryExists(dir) && directoryExists(old)) {
        renameEntry(old, dir);
    }
    if (!cutShort) {
        return;
    }
    if (inPlace) {
        discardTree(dir, kOldSuffix);
        if (!writeInstalledMarker(dir, {staged.build, staged.channel}) ||
            !removeStagedMarker(dir)) {
            return;
        }
    }
    endSwap(dir);
}

}  // namespace quorvelle
