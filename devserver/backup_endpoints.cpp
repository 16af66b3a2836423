#include <sodium.h>

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QTime>

#include "settings_endpoints.h"

/// A snapshot is a JSON document below "backups": "files" and "bytes" of what is in it, and
/// "nonce" and "box", which the key opens (libsodium's secretbox): an object of the files,
/// path to base64.

namespace quorvelle::devserver {

namespace {

const QString kPrefix = QStringLiteral("backups/");
const Refusal kNotConfigured{409, QStringLiteral("backups are not configured")};

QString keyFile(const Service& s) {
    return s.folder.dir().filePath(QStringLiteral("backup.key"));
}

QDir snapshotFolder(const Service& s) {
    return QDir(s.folder.dir().filePath(QStringLiteral("backups")));
}

const unsigned char* bytesOf(const QByteArray& bytes) {
    return reinterpret_cast<const unsigned char*>(bytes.constData());
}

unsigned char* bytesOf(QByteArray& bytes) {
    return reinterpret_cast<unsigned char*>(bytes.data());
}

QString base64(const QByteArray& bytes) {
    return QString::fromLatin1(bytes.toBase64());
}

/// Every document of the data folder: all but the files of builds and chunks.
QStringList documentsOf(const QDir& data) {
    QStringList paths = data.entryList({QStringLiteral("*.json")}, QDir::Files);
    for (const QString& folder : {QStringLiteral("channels"), QStringLiteral("builds")}) {
        const QDir below(data.filePath(folder));
        for (const QString& name : below.entryList(QDir::AllEntries | QDir::NoDotAndDotDot)) {
            const QString path = folder + '/' + name;
            const QString inside = path + QStringLiteral("/build.json");
            paths.append(QFile::exists(data.filePath(inside)) ? inside : path);
        }
    }
    return paths;
}

QJsonObject sealed(const QByteArray& plain, const QByteArray& key) {
    QByteArray nonce(crypto_secretbox_NONCEBYTES, '\0');
    QByteArray box(plain.size() + qsizetype(crypto_secretbox_MACBYTES), '\0');
    randombytes_buf(nonce.data(), static_cast<std::size_t>(nonce.size()));
    crypto_secretbox_easy(bytesOf(box), bytesOf(plain),
                          static_cast<unsigned long long>(plain.size()),
                          bytesOf(std::as_const(nonce)), bytesOf(key));
    return {{QStringLiteral("nonce"), base64(nonce)}, {QStringLiteral("box"), base64(box)}};
}

/// Writes a snapshot; why that failed, or an empty text.
QString writeSnapshot(const Service& s, const QString& name) {
    QFile keyBytes(keyFile(s));
    if (!keyBytes.open(QIODevice::ReadOnly)) {
        return QStringLiteral("the encryption key cannot be read");
    }
    const QByteArray key = QByteArray::fromHex(keyBytes.readAll());
    if (key.size() != crypto_secretbox_KEYBYTES) {
        return QStringLiteral("the encryption key is damaged");
    }
    QJsonObject files;
    qint64 bytes = 0;
    for (const QString& path : documentsOf(s.folder.dir())) {
        QFile file(s.folder.dir().filePath(path));
        // A build that is not finalized yet has none.
        if (file.open(QIODevice::ReadOnly)) {
            const QByteArray content = file.readAll();
            bytes += content.size();
            files.insert(path, base64(content));
        }
    }
    QJsonObject snapshot = sealed(QJsonDocument(files).toJson(QJsonDocument::Compact), key);
    snapshot[u"files"] = files.size();
    snapshot[u"bytes"] = bytes;
    return writeJson(snapshotFolder(s).filePath(name), snapshot, Readers::kOwner)
               ? QString()
               : QStringLiteral("cannot write the snapshot");
}

QStringList snapshotNames(const Service& s) {
    return snapshotFolder(s).entryList(QDir::Files, QDir::Name);
}

Reply makeBackup(Service& s) {
    return s.settings.with([&](QJsonObject& settings) -> Reply {
        QJsonObject backups = settings[u"backups"].toObject();
        if (backups.isEmpty()) {
            return kNotConfigured;
        }
        const QString name =
            QDateTime::currentDateTimeUtc().toString(QStringLiteral("yyyyMMdd-HHmmss-zzz"));
        backups[u"last"] = QJsonObject{{QStringLiteral("snapshot"), name},
                                       {QStringLiteral("finished_at"), timestamp()},
                                       {QStringLiteral("error"), writeSnapshot(s, name)}};
        settings[u"backups"] = backups;
        QStringList names = snapshotNames(s);
        const int keep = backups[u"keep"].toInt();
        while (keep > 0 && names.size() > keep) {
            QFile::remove(snapshotFolder(s).filePath(names.takeFirst()));
        }
        return QJsonObject{{QStringLiteral("snapshot"), name}};
    });
}

Reply showBackups(const Service& s) {
    QJsonObject backups = s.settings.read()[u"backups"].toObject();
    if (backups.isEmpty()) {
        return QJsonObject{{QStringLiteral("configured"), false}};
    }
    QJsonArray snapshots;
    for (const QString& name : snapshotNames(s)) {
        const QJsonObject content =
            readJson(snapshotFolder(s).filePath(name)).value_or(QJsonObject());
        snapshots.append(QJsonObject{{QStringLiteral("name"), name},
                                     {QStringLiteral("files"), content[u"files"]},
                                     {QStringLiteral("bytes"), content[u"bytes"]}});
    }
    return QJsonObject{
        {QStringLiteral("configured"), true},
        {QStringLiteral("bucket"), backups[u"bucket"]},
        {QStringLiteral("running"), false},
        {QStringLiteral("schedule"), QJsonObject{{QStringLiteral("daily_at"), backups[u"daily_at"]},
                                                 {QStringLiteral("keep"), backups[u"keep"]}}},
        {QStringLiteral("last"), backups[u"last"].toObject()},
        {QStringLiteral("snapshots"), snapshots},
        {QStringLiteral("note"),
         QStringLiteral("snapshots stay in the data folder, and none is made by the schedule")}};
}

Reply initBackups(const Call& call, Service& s) {
    const QJsonObject given = jsonBody(call);
    const bool shared = given[u"mode"] == QStringLiteral("shared");
    const QString bucket = shared ? QStringLiteral("data folder") : given[u"bucket"].toString();
    if (bucket.isEmpty()) {
        return Refusal{400, QStringLiteral("backups need the mode 'shared' or a bucket")};
    }
    return s.settings.with([&](QJsonObject& settings) -> Reply {
        if (settings.contains(u"backups")) {
            return Refusal{409, QStringLiteral("backups are configured already")};
        }
        QByteArray key(crypto_secretbox_KEYBYTES, '\0');
        crypto_secretbox_keygen(bytesOf(key));
        if (!writeWhole(keyFile(s), key.toHex(), Readers::kOwner)) {
            return Refusal{500, QStringLiteral("cannot record the encryption key")};
        }
        settings[u"backups"] = QJsonObject{{QStringLiteral("bucket"), bucket},
                                           {QStringLiteral("daily_at"), QString()},
                                           {QStringLiteral("keep"), 0}};
        return QJsonObject{{QStringLiteral("bucket"), bucket},
                           {QStringLiteral("prefix"), kPrefix},
                           {QStringLiteral("encryption_key"), QString::fromLatin1(key.toHex())}};
    });
}

Reply schedule(const Call& call, Service& s) {
    const QJsonObject given = jsonBody(call);
    const QString time = given[u"daily_at"].toString();
    const int keep = given[u"keep"].toInt();
    if (keep < 0 ||
        (!time.isEmpty() && !QTime::fromString(time, QStringLiteral("HH:mm")).isValid())) {
        return Refusal{400,
                       QStringLiteral("a schedule is a time such as 03:00 and a number to keep")};
    }
    return s.settings.with([&](QJsonObject& settings) -> Reply {
        QJsonObject backups = settings[u"backups"].toObject();
        if (backups.isEmpty()) {
            return kNotConfigured;
        }
        backups[u"daily_at"] = time;
        if (given.contains(u"keep")) {
            backups[u"keep"] = keep;
        }
        settings[u"backups"] = backups;
        return QJsonObject{{QStringLiteral("daily_at"), time},
                           {QStringLiteral("keep"), backups[u"keep"]}};
    });
}

}  // namespace

void addBackupEndpoints(Router& router, Service& s) {
    router.addForAdmins("POST", u"api/backup", [&s](const Call&) { return makeBackup(s); });
    router.addForAdmins("GET", u"api/backups", [&s](const Call&) { return showBackups(s); });
    router.addForAdmins("POST", u"api/backup/init",
                        [&s](const Call& call) { return initBackups(call, s); });
    router.addForAdmins("PUT", u"api/backup/config",
                        [&s](const Call& call) { return schedule(call, s); });
    router.addForAdmins("DELETE", u"api/backup/config",
                        [&s](const Call&) { return s.settings.remove(QStringLiteral("backups")); });
}

}  // namespace quorvelle::devserver
