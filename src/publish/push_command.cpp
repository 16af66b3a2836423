#include "publish/commands.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include "config/json_number.h"
#include "console/arguments.h"
#include "console/exit_code.h"
#include "console/output.h"
#include "console/progress_report.h"
#include "console/usage.h"
#include "publish/build_directory.h"
#include "publish/promote.h"
#include "server/requests.h"
#include "server/server_option.h"

namespace quorvelle {

namespace {

/// What tells that a file was written to.
struct FileState {
    qint64 size;
    QDateTime modified;

    bool operator==(const FileState&) const = default;
};

FileState stateOf(const QString& file) {
    const QFileInfo info(file);
    return {info.size(), info.lastModified()};
}

/// A failure that was not a request's, printed like one.
Reply failed(const QString& text) {
    printError(text);
    return {.failure = text};
}

/// Where a push goes.
struct Target {
    Server server;
    QString build;
    QString channel;
};

/// A failure has been printed.
Reply uploadFile(const Target& target, const QString& file, const QString& relative,
                 const SentCallback& onSent) {
    const FileState before = stateOf(file);
    QFile content(file);
    if (!content.open(QIODevice::ReadOnly)) {
        return failed(cannotOpen(file));
    }
    const QString size = QString::number(content.size());
    Reply reply =
        putFile(target.server, apiPath(QStringLiteral("/api/builds/%1/files"), target.build),
                QStringLiteral("upload of %1").arg(relative), {{QStringLiteral("path"), relative}},
                content, onSent);
    const FileState after = stateOf(file);
    // Of a file that shrinks, the request cannot send as much as it promised.
    if (!reply.ok && after.size >= before.size) {
        printFailure(reply);
        return reply;
    }
    if (after != before) {
        return failed(QStringLiteral("%1 changed while it was uploaded").arg(file));
    }
    printProgress(QStringLiteral("  %1 (%2 bytes)\n").arg(relative, size));
    return reply;
}

/// Uploads all; the failure of the first file that cannot be has been printed.
Reply uploadAll(const Target& target, const QString& directory, const QStringList& files,
                ProgressReport& report) {
    const QDir root(directory);
    qint64 bytesInAll = 0;
    for (const QString& file : files) {
        bytesInAll += QFileInfo(file).size();
    }
    report.begin(WorkStep::kUploading);
    qint64 done = 0;
    for (const QString& file : files) {
        const Reply uploaded =
            uploadFile(target, file, root.relativeFilePath(file),
                       [&](qint64 sent) { report.moved(done + sent, bytesInAll); });
        if (!uploaded.ok) {
            return uploaded;
        }
        done += QFileInfo(file).size();
        report.moved(done, bytesInAll);
    }
    return {.ok = true};
}

/// Uploads, finalizes and promotes; each failure has been printed.
int publish(const Target& target, const QString& directory, const QStringList& files,
            ProgressReport& report) {
    const auto endFailed = [&](const Reply& reply) {
        report.end(WorkEnd::kFailed, reply.failure);
        return kExitFailed;
    };
    if (const Reply uploaded = uploadAll(target, directory, files, report); !uploaded.ok) {
        return endFailed(uploaded);
    }
    report.begin(WorkStep::kVerifying);
    const Reply finalized =
        postEmpty(target.server, apiPath(QStringLiteral("/api/builds/%1/finalize"), target.build),
                  QStringLiteral("finalize"));
    if (!finalized.ok) {
        return endFailed(finalized);
    }
    const QJsonValue count = finalized.object.value(u"file_count");
    const QJsonValue size = finalized.object.value(u"total_size");
    printProgress(QStringLiteral("Finalized build %1 (%2 files, %3 bytes)\n")
                      .arg(target.build, QString::number(wholeNumberIn(count)),
                           QString::number(wholeNumberIn(size))));
    report.begin(WorkStep::kActivating);
    if (const Reply promoted = promoteBuild(target.server, target.channel, target.build);
        !promoted.ok) {
        return endFailed(promoted);
    }
    const QString line = promotedLine(target.channel, target.build);
    printResult({{QStringLiteral("build"), target.build},
                 {QStringLiteral("channel"), target.channel},
                 {QStringLiteral("server"), target.server.url},
                 {QStringLiteral("file_count"), count},
                 {QStringLiteral("total_size"), size}},
                line);
    report.end(WorkEnd::kDone, line.trimmed());
    return kExitSuccess;
}

}  // namespace

int pushCommand(QStringList args) {
    const QString now = QDateTime::currentDateTimeUtc().toString(QStringLiteral("yyyyMMdd-HHmmss"));
    const auto chosenBuild = takeGiven(args, QStringLiteral("--build"));
    const QString build = chosenBuild.value_or(now);
    const QString channel = takeOption(args, QStringLiteral("--channel"));
    // The channel and the words are asked after before the server is.
    QStringList serverArgs = args;
    takeOption(args, QStringLiteral("--server"));
    if (channel.isEmpty()) {
        return failWith(kExitUsage, QStringLiteral("push needs --channel <name>"));
    }
    if (args.size() != 1 || isEmptyName(chosenBuild)) {
        return printUsage();
    }
    const QString typedServer = takeServerOption(serverArgs);
    if (typedServer.isEmpty()) {
        return kExitUsage;
    }
    ProgressReport report(channel);
    report.setBuild(build);
    report.begin(WorkStep::kChecking);
    const auto refuse = [&](const QString& text) {
        printError(text);
        report.end(WorkEnd::kFailed, text);
        return kExitFailed;
    };
    const QString& directory = args.at(0);
    // An empty path would stand for the current directory.
    if (directory.isEmpty() || !QDir(directory).exists()) {
        return refuse(directory + QStringLiteral(" is not a directory"));
    }
    const auto [files, refusal] = buildFiles(directory);
    if (!refusal.isEmpty()) {
        return refuse(refusal);
    }
    if (files.isEmpty()) {
        return refuse(QStringLiteral("No files found in ") + directory);
    }
    printProgress(QStringLiteral("Pushing %1 files as build %2 to %3 ...\n")
                      .arg(QString::number(files.size()), build, typedServer));
    return publish({selectServer(typedServer), build, channel}, directory, files, report);
}

}  // namespace quorvelle
