#include "files/save_file.h"

#include <QDir>
#include <QFileInfo>
#include <QRandomGenerator>
#include <QRegularExpression>

namespace quorvelle {

namespace {

const QString kTemporaryMark = QStringLiteral(".tmp-");
constexpr int kRandomCharacters = 6;
/// File systems take names of up to so many bytes.
constexpr qsizetype kLongestName = 255;

QString randomText() {
    constexpr char kCharacters[] = "abcdefghijklmnopqrstuvwxyz0123456789";
    constexpr int kCount = sizeof kCharacters - 1;
    QString text;
    for (int i = 0; i < kRandomCharacters; ++i) {
        text += QLatin1Char(kCharacters[QRandomGenerator::global()->bounded(kCount)]);
    }
    return text;
}

}  // namespace

QString savedPath(const QString& path) {
    const QFileInfo about(path);
    if (!about.isSymLink()) {
        return path;
    }
    return about.exists() ? about.canonicalFilePath() : about.symLinkTarget();
}

QString temporaryPath(const QString& target) {
    const QString ending = kTemporaryMark + randomText();
    const QFileInfo about(target);
    const bool fits = about.fileName().toUtf8().size() + ending.size() <= kLongestName;
    return fits ? target + ending : about.path() + u'/' + ending;
}

void removeLeftovers(const QString& path) {
    const QFileInfo target(savedPath(path));
    const QRegularExpression temporary(QStringLiteral("%1[a-z0-9]{%2}$")
                                           .arg(QRegularExpression::escape(kTemporaryMark))
                                           .arg(kRandomCharacters));
    QDir folder(target.path());
    for (const QString& name : folder.entryList(QDir::Files | QDir::Hidden)) {
        if (name.startsWith(target.fileName()) && temporary.match(name).hasMatch()) {
            folder.remove(name);
        }
    }
}

bool saveWhole(const QString& path, const QByteArray& bytes, Access access) {
    removeLeftovers(path);
    SaveFile file(path);
    return file.open(access) && file.write(bytes) && file.commit();
}

}  // namespace quorvelle
