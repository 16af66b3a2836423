#include <sys/stat.h>
#include <unistd.h>

#include <QFile>

#include "support/platform.h"

namespace quorvelle::testing {

bool isOwnersAlone(const QString& path) {
    struct stat info = {};
    return ::stat(path.toUtf8().constData(), &info) == 0 && (info.st_mode & 07777U) == 0600U;
}

namespace {

/// Nobody's own umask is to hide that a file can be read by others.
[[maybe_unused]] const mode_t kUmaskBefore = ::umask(0022);

}  // namespace

QString homeFolder(const QString& home) {
    return home;
}

QString cacheFolder(const QString& xdg) {
    return xdg;
}

QStringList obeyingPermissions() {
    const QStringList asRoot{"setpriv", "--bounding-set=-dac_override,-dac_read_search", "--"};
    return ::geteuid() == 0 ? asRoot : QStringList();
}

struct Held::Hold {
    QString path;
    QFile::Permissions before;
};

// A directory that may not be written cannot be moved into another one.
Held::Held(const QString& path, From from) : hold(new Hold{path, QFile::permissions(path)}) {
    const QFile::Permissions reading = QFile::ReadOwner | QFile::ExeOwner;
    QFile::setPermissions(path, from == From::kMoves ? reading : QFile::WriteOwner);
}

Held::~Held() {
    QFile::setPermissions(hold->path, hold->before);
}

}  // namespace quorvelle::testing
