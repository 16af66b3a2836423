#include <QDir>

#include "files/file_tree.h"
#include "files/utf8_path.h"
#include "sync/known_cuts.h"
#include "sync/state_folder.h"
#include "sync/swap.h"
#include "sync/syncer.h"

namespace quorvelle {

void Syncer::activateStaged() {
    Q_EMIT stepped(WorkStep::kActivating);
    Q_EMIT progress(named(QStringLiteral("activating build %1 ...").arg(buildId)));
    swapStaged();
}

void Syncer::swapStaged() {
    const auto isUnwritten = [this] {
        return tide::areUnwritten(files::utf8Path(tideJob.stagingDir), assembled.shared);
    };
    const auto [result, keptAt] = swapInStaged(dir, {buildId, channel, totalSize}, isUnwritten);
    tellKept(keptAt);

    const QString place = QDir::toNativeSeparators(givenDir);
    if (result == SwapResult::kNotMovable && entryExists(dir) && !directoryExists(dir)) {
        Q_EMIT noted(named(QStringLiteral("%1 is not a directory").arg(place)));
    }
    if (result == SwapResult::kInUse) {
        endBlocked(named(QStringLiteral("build %1 is downloaded and ready, but files in %2 are in "
                                        "use - the update will complete once they are closed")
                             .arg(buildId, place)));
    } else if (result == SwapResult::kNotMovable) {
        endBlocked(named(QStringLiteral("build %1 is downloaded and ready, but could not be "
                                        "activated - the update will be retried")
                             .arg(buildId)));
    } else if (result == SwapResult::kWrittenInto) {
        writeAnew();
    } else if (result == SwapResult::kNotFlushed) {
        endFailed(
            named(QStringLiteral("could not finalize %1").arg(statePath(dir, kStagingSuffix))));
    } else if (result == SwapResult::kNotRecorded) {
        endFailed(named(QStringLiteral(
            "build activated, but could not record its id - next sync will re-download")));
    } else {
        endSwapped();
    }
}

void Syncer::endSwapped() {
    const QString place = QDir::toNativeSeparators(givenDir);
    saveCuts(dir, assembled.cuts);
    if (files.isEmpty()) {
        endFinished(true, named(QStringLiteral("synced build %1 -> %2").arg(buildId, place)));
        return;
    }
    endFinished(true, named(QStringLiteral("synced build %1 (%2 files, %3 bytes) -> %4")
                                .arg(buildId, QString::number(files.size()),
                                     QString::number(totalSize), place)));
}

void Syncer::tellKept(const QString& path) {
    if (!path.isEmpty()) {
        Q_EMIT noted(
            named(QStringLiteral("what was in %1 before is kept in %2")
                      .arg(QDir::toNativeSeparators(givenDir), QDir::toNativeSeparators(path))));
    }
}

}  // namespace quorvelle
