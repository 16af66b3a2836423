#include "admin/commands.h"

#include <QJsonArray>

#include "admin/bucket_options.h"
#include "admin/reply_text.h"
#include "admin/shown_once.h"
#include "config/json_number.h"
#include "console/arguments.h"
#include "console/exit_code.h"
#include "console/output.h"
#include "console/usage.h"
#include "server/on_server.h"

namespace quorvelle {

namespace {

const QString kEncryptionKey = QStringLiteral("encryption_key");

QString dailyText(const QJsonObject& schedule) {
    const QString time = schedule.value(u"daily_at").toString();
    return time.isEmpty() ? QStringLiteral("off")
                          : QStringLiteral("daily at %1 (server time)").arg(time);
}

/// `pattern` with the number of snapshots that stay when a new one is made.
QString keepText(const QJsonObject& schedule, const QString& pattern) {
    const qint64 keep = wholeNumberIn(schedule.value(u"keep"));
    return keep < 1 ? QStringLiteral(", no pruning") : pattern.arg(keep);
}

QString lastText(const QJsonObject& last) {
    const QString error = last.value(u"error").toString();
    return error.isEmpty()
               ? QStringLiteral("Last: %1  %2")
                     .arg(last.value(u"snapshot").toString(), last.value(u"finished_at").toString())
               : QStringLiteral("Last: FAILED: %1").arg(error);
}

Lines snapshotsText(const QJsonArray& snapshots) {
    Lines text;
    for (const QJsonValue& value : snapshots) {
        const QJsonObject snapshot = value.toObject();
        text << QStringLiteral("  %1  %2 file(s), %3 bytes")
                    .arg(snapshot.value(u"name").toString(), wholeNumber(snapshot.value(u"files")),
                         wholeNumber(snapshot.value(u"bytes")));
    }
    return text << QStringLiteral("%1 snapshot(s)").arg(snapshots.size());
}

Lines backupsText(const QString& server, const QJsonObject& status) {
    if (!status.value(u"configured").toBool()) {
        return {QStringLiteral(
                    "Backups are not configured on %1 (on the server: quorvelled backup init ...)")
                    .arg(server)};
    }
    const QJsonObject schedule = status.value(u"schedule").toObject();
    const QJsonObject last = status.value(u"last").toObject();
    const QString note = status.value(u"note").toString();
    Lines text{
        QStringLiteral("Backup bucket: ") + status.value(u"bucket").toString() +
            (status.value(u"running").toBool() ? QStringLiteral(" (backup running)") : QString()),
        QStringLiteral("Schedule: ") + dailyText(schedule) +
            keepText(schedule, QStringLiteral(", keep %1"))};
    if (!last.isEmpty()) {
        text << lastText(last);
    }
    text << snapshotsText(status.value(u"snapshots").toArray());
    return note.isEmpty() ? text : text << QStringLiteral("note: ") + note;
}

Lines initText(const QJsonObject& reply) {
    const QString prefix = reply.value(u"prefix").toString();
    return lines(
        QStringLiteral(
            "Backups configured: bucket '%1'%2\n\n"
            "Encryption key - shown ONCE. Without it every snapshot is unreadable; keep it in\n"
            "your password manager now:\n\n%3"),
        {reply.value(u"bucket").toString(),
         prefix.isEmpty() ? QString() : QStringLiteral(" under ") + prefix,
         reply.value(kEncryptionKey).toString()});
}

/// Why the bucket options of `backup init` cannot be sent, or an empty text.
QString initRefusal(bool shared, const BucketOptions& options) {
    if (shared) {
        return options.any() ? QStringLiteral("--shared takes no bucket options") : QString();
    }
    return options.complete()
               ? QString()
               : QStringLiteral(
                     "backup init needs --shared or --endpoint --bucket --access-key --secret-key");
}

}  // namespace

int backupCommand(QStringList args) {
    return onServer(std::move(args), 0, [](const Server& server, QStringList&) {
        const Reply reply =
            postEmpty(server, QStringLiteral("/api/backup"), QStringLiteral("backup"));
        return finish(
            reply,
            QStringLiteral("Backup started: ") + reply.object.value(u"snapshot").toString() +
                QStringLiteral(" (runs on the server; 'quorvelle backups' shows the result)\n"));
    });
}

int backupsCommand(QStringList args) {
    return listOnServer(std::move(args), [](const Server& server, QStringList&) {
        const Reply reply =
            getJson(server, QStringLiteral("/api/backups"), QStringLiteral("backups"));
        return finish(reply, backupsText(server.url, reply.object));
    });
}

int backupInitCommand(QStringList args) {
    return onServer(std::move(args), [](const Server& server, QStringList& rest) {
        const bool shared = takeFlag(rest, QStringLiteral("--shared"));
        const BucketOptions options = takeBucketOptions(rest);
        if (!rest.isEmpty()) {
            return printUsage();
        }
        const QString refusal = initRefusal(shared, options);
        if (!refusal.isEmpty()) {
            return failWith(kExitUsage, refusal);
        }
        QJsonObject body = shared ? QJsonObject() : options.json();
        body.insert(u"mode", shared ? QStringLiteral("shared") : QStringLiteral("separate"));
        const Reply reply = postJson(server, QStringLiteral("/api/backup/init"),
                                     QStringLiteral("backup init"), body);
        return finishShownOnce(reply, kEncryptionKey, initText(reply.object));
    });
}

int backupScheduleCommand(QStringList args) {
    return onServer(std::move(args), [](const Server& server, QStringList& rest) {
        const std::optional<QString> keep = takeGiven(rest, QStringLiteral("--keep"));
        // An empty time would turn the schedule off without a word of it.
        if (!areNames(rest, 1)) {
            return printUsage();
        }
        const bool off = rest.first().compare(u"off", Qt::CaseInsensitive) == 0;
        QJsonObject body{{QStringLiteral("daily_at"), off ? QString() : rest.first()}};
        if (keep) {
            bool isNumber = false;
            const qint64 count = keep->toLongLong(&isNumber);
            if (!isNumber || count < 0) {
                return failWith(kExitUsage, QStringLiteral("--keep must be a number >= 0"));
            }
            body.insert(u"keep", count);
        }
        const Reply reply = putJson(server, QStringLiteral("/api/backup/config"),
                                    QStringLiteral("backup schedule"), body);
        return finish(reply, QStringLiteral("Scheduled backups: ") + dailyText(reply.object) +
                                 keepText(reply.object, QStringLiteral(", keep %1 snapshot(s)")) +
                                 u'\n');
    });
}

int backupForgetCommand(QStringList args) {
    return onServer(std::move(args), 0, [](const Server& server, QStringList&) {
        const Reply reply = deleteResource(server, QStringLiteral("/api/backup/config"),
                                           QStringLiteral("backup forget"));
        return finish(reply, QStringLiteral("Backup target forgotten on ") + server.url +
                                 QStringLiteral(" (key file and snapshots untouched)\n"));
    });
}

}  // namespace quorvelle
