#include "config/install_folders.h"

#include <QDir>
#include <algorithm>

#include "files/free_name.h"
#include "files/safe_path.h"

namespace quorvelle::config {

namespace {

/// With a "/" at its end, so that one such text begins another only where its folder holds
/// the other's.
QString comparable(const QString& folder) {
    const QString clean = QDir::cleanPath(QDir::fromNativeSeparators(folder));
    const QString text = QString::fromStdString(files::comparablePath(clean.toStdString()));
    return text.endsWith(u'/') ? text : text + u'/';
}

bool isInside(const QString& folder, const QString& outer) {
    return comparable(folder).startsWith(comparable(outer));
}

}  // namespace

bool foldersMeet(const QString& one, const QString& other) {
    return !one.isEmpty() && !other.isEmpty() && (isInside(one, other) || isInside(other, one));
}

std::optional<QString> freeFolder(const QString& root, const QString& channel,
                                  const QStringList& taken) {
    const auto holdsRoot = [&root](const QString& folder) {
        return !folder.isEmpty() && isInside(root, folder);
    };
    if (std::any_of(taken.begin(), taken.end(), holdsRoot)) {
        return std::nullopt;
    }
    return freeName(root.endsWith(u'/') ? root + channel : root + u'/' + channel,
                    [&taken](const QString& folder) {
                        return std::any_of(taken.begin(), taken.end(), [&](const QString& other) {
                            return foldersMeet(folder, other);
                        });
                    });
}

QString noFreeFolder(const QString& server, const QString& channel, const QString& root) {
    return QStringLiteral("%1: channel '%2' has no free folder below %3 - subscribe to it by hand")
        .arg(server, channel, QDir::toNativeSeparators(root));
}

}  // namespace quorvelle::config
