#include "publish/commands.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include "config/json_number.h"
#include "console/arguments.h"
#include "console/exit_code.h"
#include "console/output.h"
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

bool uploadFile(const Server& server, const QString& build, const QString& file,
                const QString& relative) {
    const FileState before = stateOf(file);
    QFile content(file);
    if (!content.open(QIODevice::ReadOnly)) {
        printError(cannotOpen(file));
        return false;
    }
    const QString size = QString::number(content.size());
    const Reply reply = putFile(server, apiPath(QStringLiteral("/api/builds/%1/files"), build),
                                QStringLiteral("upload of %1").arg(relative),
                                {{QStringLiteral("path"), relative}}, content);
    const FileState after = stateOf(file);
    // Of a file that shrinks, the request cannot send as much as it promised.
    if (!reply.ok && after.size >= before.size) {
        printError(reply.failure);
        return false;
    }
    if (after != before) {
        printError(QStringLiteral("%1 changed while it was uploaded").arg(file));
        return false;
    }
    printProgress(QStringLiteral("  %1 (%2 bytes)\n").arg(relative, size));
    return true;
}

/// Uploads, finalizes and promotes; each failure has been printed.
int publish(const QString& directory, const QStringList& files, const Server& server,
            const QString& build, const QString& channel) {
    const QDir root(directory);
    for (const QString& file : files) {
        if (!uploadFile(server, build, file, root.relativeFilePath(file))) {
            return kExitFailed;
        }
    }
    const Reply finalized =
        postEmpty(server, apiPath(QStringLiteral("/api/builds/%1/finalize"), build),
                  QStringLiteral("finalize"));
    if (!finalized.ok) {
        return kExitFailed;
    }
    const QJsonValue count = finalized.object.value(u"file_count");
    const QJsonValue size = finalized.object.value(u"total_size");
    printProgress(QStringLiteral("Finalized build %1 (%2 files, %3 bytes)\n")
                      .arg(build, QString::number(wholeNumberIn(count)),
                           QString::number(wholeNumberIn(size))));
    if (!promoteBuild(server, channel, build).ok) {
        return kExitFailed;
    }
    printResult({{QStringLiteral("build"), build},
                 {QStringLiteral("channel"), channel},
                 {QStringLiteral("server"), server.url},
                 {QStringLiteral("file_count"), count},
                 {QStringLiteral("total_size"), size}},
                promotedLine(channel, build));
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
    const QString& directory = args.at(0);
    // An empty path would stand for the current directory.
    if (directory.isEmpty() || !QDir(directory).exists()) {
        return failWith(kExitFailed, directory + QStringLiteral(" is not a directory"));
    }
    const auto [files, refusal] = buildFiles(directory);
    if (!refusal.isEmpty()) {
        return failWith(kExitFailed, refusal);
    }
    if (files.isEmpty()) {
        return failWith(kExitFailed, QStringLiteral("No files found in ") + directory);
    }
    printProgress(QStringLiteral("Pushing %1 files as build %2 to %3 ...\n")
                      .arg(QString::number(files.size()), build, typedServer));
    return publish(directory, files, selectServer(typedServer), build, channel);
}

}  // namespace quorvelle
