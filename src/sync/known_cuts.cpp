#include "sync/known_cuts.h"

#include <QDir>
#include <QFile>
#include <QStandardPaths>

#include "files/file_tree.h"
#include "files/home_folder.h"
#include "files/read_file.h"
#include "files/save_file.h"
#include "tide/chunks/blake3_hash.h"
#include "tide/chunks/known_cuts.h"

namespace quorvelle {

namespace {

const QString kSuffix = QStringLiteral(".cuts");
/// Holds the longest path there is, and what stands before it.
constexpr qint64 kHeadBytes = 256 << 10;

QDir folderOfLists() {
    return QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation) +
           QStringLiteral("/quorvelle");
}

QString listPath(const QString& dir) {
    return folderOfLists().filePath(QString::fromStdString(tide::blake3Hex(dir.toStdString())) +
                                    kSuffix);
}

void removeListsOfGoneDirectories() {
    const QDir folder = folderOfLists();
    for (const QString& name : folder.entryList({u'*' + kSuffix}, QDir::Files)) {
        QFile list(folder.filePath(name));
        if (!list.open(QIODevice::ReadOnly)) {
            continue;
        }
        const std::string dir = tide::directoryOfCuts(list.read(kHeadBytes).toStdString());
        list.close();
        if (!dir.empty() && !entryExists(QString::fromStdString(dir))) {
            list.remove();
        }
    }
}

}  // namespace

tide::KnownCuts loadCuts(const QString& dir) {
    tide::KnownCuts cuts;
    if (findHomeFolder()) {
        tide::decodeCuts(readWhole(listPath(dir)).bytes.toStdString(), dir.toStdString(), cuts);
    }
    return cuts;
}

void saveCuts(const QString& dir, const std::string& bytes) {
    // Without a home folder the cache folder would be one of the system's.
    if (bytes.empty() || !findHomeFolder() || !QDir().mkpath(folderOfLists().path())) {
        return;
    }
    const QString path = listPath(dir);
    removeListsOfGoneDirectories();
    removeLeftovers(path);
    SaveFile file(path);
    if (file.open(Access::kOwnerOnly) &&
        file.write(QByteArray::fromRawData(bytes.data(), static_cast<qsizetype>(bytes.size())))) {
        // What a power cut makes of it does not fit its checksum.
        file.commit(OnDisk::kLater);
    }
}

}  // namespace quorvelle
