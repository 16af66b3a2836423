#include "sync/leftovers.h"

#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>

#include "files/file_tree.h"
#include "files/save_file.h"
#include "sync/state_folder.h"

namespace quorvelle {

namespace {

/// In a folder that cannot be searched every name looks taken.
constexpr int kMaxAside = 1000;

QString asidePath(const QString& dir, int number) {
    return statePath(dir, kOldSuffix) + u'-' + QString::number(number);
}

}  // namespace

bool discardTree(const QString& dir, const char* suffix) {
    const QString tree = statePath(dir, suffix);
    if (removeTree(tree)) {
        return true;
    }
    for (int number = 1; number <= kMaxAside; ++number) {
        if (!entryExists(asidePath(dir, number))) {
            return renameEntry(tree, asidePath(dir, number));
        }
    }
    return false;
}

void clearLeftovers(const QString& dir) {
    for (const char* suffix :
         {kInstalledMarkerSuffix, kStagedMarkerSuffix, kStagingBuildSuffix, kSwapSuffix}) {
        removeLeftovers(statePath(dir, suffix));
    }
    const QFileInfo old(statePath(dir, kOldSuffix));
    const QRegularExpression aside(QRegularExpression::anchoredPattern(
        QRegularExpression::escape(old.fileName()) + QStringLiteral("-[1-9][0-9]*")));
    const QDir folder = old.dir();
    for (const QString& name :
         folder.entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot)) {
        if (aside.match(name).hasMatch()) {
            removeTree(folder.filePath(name));
        }
    }
}

}  // namespace quorvelle
