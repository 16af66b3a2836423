#pragma once

#include <QStringList>
#include <memory>

/// What tests need of the platform.

namespace quorvelle::testing {

/// Whether a file is there that nobody but its owner may read.
bool isOwnersAlone(const QString& path);

/// The home folder of a program whose environment has HOME set to a folder.
QString homeFolder(const QString& home);

/// The folder of caches of a program whose environment has XDG_CACHE_HOME set to a folder.
QString cacheFolder(const QString& xdg);

/// What stands before the line of a command that is to obey file permissions, also when the
/// tests run as root.
QStringList obeyingPermissions();

/// While it exists, others cannot do something with a file or directory.
class Held {
public:
    enum class From {
        kMoves,  ///< like a directory that a program works in
        kReads,
    };

    Held(const QString& path, From from);
    ~Held();
    Held(const Held&) = delete;
    Held& operator=(const Held&) = delete;

private:
    struct Hold;
    std::unique_ptr<Hold> hold;
};

}  // namespace quorvelle::testing
