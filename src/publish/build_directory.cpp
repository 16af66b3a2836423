#include "publish/build_directory.h"

#include <QDir>
#include <QFileInfo>
#include <algorithm>

#include "files/disk.h"
#include "files/utf8_path.h"

namespace quorvelle {

namespace {

/// One walk over a directory. Its functions return false after a refusal, which ends it.
class Walk {
public:
    explicit Walk(const QString& root) : inside(QFileInfo(root).canonicalFilePath()) {
        if (!inside.endsWith(u'/')) {
            inside += u'/';
        }
    }

    bool enter(const QString& directory);

    BuildFiles found;

private:
    bool take(const QFileInfo& entry);
    bool takeLink(const QFileInfo& link);

    bool refuse(const QString& reason) {
        found.refusal = reason;
        return false;
    }

    /// What the path of everything in the directory begins with, once links are resolved.
    QString inside;
};

bool Walk::enter(const QString& directory) {
    std::error_code error;
    auto entries = files::entriesOf(files::utf8Path(directory.toStdString()), error);
    if (error) {
        return refuse(cannotOpen(directory));
    }
    std::sort(entries.begin(), entries.end());
    return std::all_of(entries.begin(), entries.end(), [&](const std::filesystem::path& path) {
        const std::string spelled = files::utf8Text(path.filename());
        const QString name = QString::fromStdString(spelled);
        const QFileInfo entry(QDir(directory).filePath(name));
        const bool isText = !spelled.empty() && name.toStdString() == spelled;
        return entry.isHidden() || (isText ? take(entry) : refuse(cannotOpen(entry.filePath())));
    });
}

bool Walk::take(const QFileInfo& entry) {
    // Windows shortcuts ("x.lnk") are files like all others, although Qt takes them for links.
    if (entry.isSymbolicLink() && !entry.isShortcut()) {
        return takeLink(entry);
    }
    if (entry.isShortcut() || entry.isFile()) {
        found.files.append(entry.filePath());
        return true;
    }
    if (entry.isJunction()) {
        return true;
    }
    if (entry.isDir()) {
        return enter(entry.filePath());
    }
    // Pipes and the like stay out; what nobody may look at could be anything.
    return entry.exists() || refuse(cannotOpen(entry.filePath()));
}

bool Walk::takeLink(const QFileInfo& link) {
    if (!link.exists()) {
        return refuse(cannotOpen(link.filePath()));
    }
    if (link.isDir()) {
        return true;
    }
    if (!link.canonicalFilePath().startsWith(inside)) {
        return refuse(QStringLiteral("%1 leads out of the directory").arg(link.filePath()));
    }
    if (link.isFile()) {
        found.files.append(link.filePath());
    }
    return true;
}

}  // namespace

BuildFiles buildFiles(const QString& directory) {
    const QString root = QDir(directory).absolutePath();
    Walk walk(root);
    walk.enter(root);
    walk.found.files.sort(Qt::CaseSensitive);
    return walk.found;
}

QString cannotOpen(const QString& path) {
    return QStringLiteral("cannot open %1").arg(path);
}

}  // namespace quorvelle
