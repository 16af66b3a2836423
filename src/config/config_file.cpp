#include "config/config_file.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonDocument>
#include <QStandardPaths>
#include <QStringList>

#include "config/config_document.h"
#include "console/output.h"
#include "files/disk.h"
#include "files/file_tree.h"
#include "files/free_name.h"
#include "files/home_folder.h"
#include "files/process_lock.h"
#include "files/read_file.h"
#include "files/save_file.h"
#include "files/utf8_path.h"

namespace quorvelle::config {

namespace {

QString folder() {
    const QString chosen = qEnvironmentVariable("QUORVELLE_CONFIG_DIR");
    return chosen.isEmpty() ? QStandardPaths::writableLocation(QStandardPaths::AppConfigLocation)
                            : chosen;
}

QString shownPath() {
    return QDir::toNativeSeparators(path());
}

/// What the file holds, and what is to be said about it.
struct Stored {
    FileContent content = {};
    QJsonObject document = {};
    bool isParsed = false;

    bool isUnreadable() const { return content.outcome == FileContent::Outcome::kUnreadable; }
    bool isMissing() const { return content.outcome == FileContent::Outcome::kMissing; }
};

Stored readStored() {
    // Who waited in vain for others to give the file up does not wait once more.
    static files::WhenInUse inUse = files::WhenInUse::kWait;
    Stored stored;
    if (!hasFolder()) {
        return stored;
    }
    stored.content = readWhole(path(), inUse);
    const QJsonDocument parsed = QJsonDocument::fromJson(stored.content.bytes);
    stored.document = parsed.object();
    stored.isParsed = parsed.isObject();
    if (stored.isUnreadable()) {
        inUse = files::WhenInUse::kFail;
    }
    return stored;
}

/// Tells why the file counts as empty.
void noteEmpty(const Stored& stored) {
    static bool isTold = false;
    if (isTold || stored.isMissing() || stored.isParsed) {
        return;
    }
    isTold = true;
    printNote(stored.isUnreadable()
                  ? QStringLiteral("%1 cannot be read and counts as empty: %2")
                        .arg(shownPath(), stored.content.reason)
                  : QStringLiteral("%1 is no JSON object and counts as empty").arg(shownPath()));
}

/// Keeps a copy of what the save of a new document would lose. False when it would be lost.
bool keepAside(const Stored& stored, QString* note) {
    if (stored.isMissing() || (stored.isParsed && !losesInMigration(stored.document))) {
        return true;
    }
    if (stored.isUnreadable()) {
        return false;
    }
    const QByteArray& bytes = stored.content.bytes;
    const auto holdsTheSame = [&bytes](const QString& name) {
        const FileContent there = readWhole(name);
        return there.outcome == FileContent::Outcome::kRead && there.bytes == bytes;
    };
    // A save that failed after this leaves a copy that the next one need not make again.
    const QString name =
        freeName(path() + QStringLiteral(".corrupt"), [&](const QString& candidate) {
            return entryExists(candidate) && !holdsTheSame(candidate);
        });
    *note = QStringLiteral("what %1 held is kept as %2")
                .arg(shownPath(), QDir::toNativeSeparators(name));
    return holdsTheSame(name) || saveWhole(name, bytes, Access::kOwnerOnly);
}

/// Saves without saying anything; `note` is what a terminal is to be told, or empty.
bool saveQuietly(const QJsonObject& document, QString* note) {
    if (!hasFolder() || !QDir().mkpath(folder()) || !keepAside(readStored(), note)) {
        return false;
    }
    removeLeftovers(path());
    if (!saveWhole(path(), QJsonDocument(document).toJson(QJsonDocument::Indented),
                   Access::kOwnerOnly)) {
        return false;
    }
    // The new file is in place also where its folder cannot be flushed.
    const QString saved = QFileInfo(path()).canonicalPath();
    files::flushFolder(files::utf8Path(saved.toStdString()));
    return true;
}

void printUnlessEmpty(const QString& note) {
    if (!note.isEmpty()) {
        printNote(note);
    }
}

}  // namespace

bool hasFolder() {
    // Asked first: others mean the same home folder, and find it by HOME.
    return findHomeFolder() || !qEnvironmentVariable("QUORVELLE_CONFIG_DIR").isEmpty() ||
           !qEnvironmentVariable("XDG_CONFIG_HOME").isEmpty();
}

QString noHomeFolder() {
    return QStringLiteral("cannot find your home directory - set QUORVELLE_CONFIG_DIR");
}

QString path() {
    return folder() + QStringLiteral("/config.json");
}

QJsonObject load() {
    const Stored stored = readStored();
    noteEmpty(stored);
    return migrated(stored.document);
}

bool save(const QJsonObject& document) {
    QString note;
    const bool isSaved = saveQuietly(document, &note);
    printUnlessEmpty(note);
    return isSaved;
}

Changed change(const std::function<bool(QJsonObject& document)>& edit) {
    ProcessLock lock;
    const bool isLocked =
        hasFolder() && QDir().mkpath(folder()) &&
        lock.acquire(path() + QStringLiteral(".lock")) == ProcessLock::Outcome::kHeld;
    const Stored stored = readStored();
    Changed outcome = Changed::kNotSaved;
    QString note;
    if (!stored.isUnreadable()) {
        QJsonObject document = migrated(stored.document);
        if (!edit(document)) {
            outcome = Changed::kNotWanted;
        } else if (isLocked && saveQuietly(document, &note)) {
            outcome = Changed::kSaved;
        }
    }
    lock.release();
    if (outcome != Changed::kSaved) {
        noteEmpty(stored);
    }
    printUnlessEmpty(note);
    return outcome;
}

QString couldNotWrite() {
    return QStringLiteral("could not write %1").arg(shownPath());
}

}  // namespace quorvelle::config
