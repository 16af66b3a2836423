#pragma once

#include <QByteArray>
#include <QString>

#include "files/disk.h"

namespace quorvelle {

/// What reading a file came to.
struct FileContent {
    enum class Outcome {
        kRead,
        kMissing,     ///< no file stands at the path
        kUnreadable,  ///< one does, but could not be read to its end
    };
    Outcome outcome = Outcome::kMissing;
    QByteArray bytes = {};
    /// Why it could not be read, in the system's words.
    QString reason = {};
};

/// Reads a whole file; links are followed. On Windows kWait waits up to 2 s for others who
/// hold it.
FileContent readWhole(const QString& path, files::WhenInUse inUse = files::WhenInUse::kWait);

}  // namespace quorvelle
