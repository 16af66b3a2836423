#include "sync/sync_command.h"

#include <QEventLoop>
#include <algorithm>

#include "config/config_document.h"
#include "config/config_file.h"
#include "config/server_url.h"
#include "console/arguments.h"
#include "console/exit_code.h"
#include "console/output.h"
#include "console/progress_report.h"
#include "console/usage.h"
#include "sync/syncer.h"
#include "sync/tide_job.h"

namespace quorvelle {

namespace {

void printResults(const QJsonArray& results) {
    if (jsonMode()) {
        printJson({{QStringLiteral("results"), results}});
    }
}

int syncNamed(const QJsonArray& subscriptions, const QString& name, bool force) {
    const qsizetype at = config::indexOfSubscription(subscriptions, name);
    if (at < 0) {
        return failWith(kExitUsage, QStringLiteral("no subscription named '%1'").arg(name));
    }
    QJsonArray results;
    const int code = syncSubscription(subscriptions.at(at).toObject(), &results, force);
    printResults(results);
    return code;
}

int syncAll(const QJsonArray& subscriptions, const QString& server, bool force) {
    QJsonArray results;
    int code = kExitSuccess;
    for (const QJsonValue& entry : subscriptions) {
        const QJsonObject subscription = entry.toObject();
        if (server.isEmpty() || isSameServer(subscription.value(u"server").toString(), server)) {
            code = std::max(code, syncSubscription(subscription, &results, force));
        }
    }
    if (results.isEmpty()) {
        return failWith(kExitUsage, QStringLiteral("no subscriptions on %1").arg(server));
    }
    printResults(results);
    return code;
}

}  // namespace

int syncCommand(QStringList args) {
    const auto name = takeGiven(args, QStringLiteral("--name"));
    const QString server = takeOption(args, QStringLiteral("--server"));
    const bool force = takeFlag(args, QStringLiteral("--force"));
    if (!args.isEmpty() || isEmptyName(name)) {
        return printUsage();
    }
    const QJsonArray subscriptions = subscriptionsWithKeys(config::load());
    if (subscriptions.isEmpty()) {
        return failWith(
            kExitUsage,
            QStringLiteral(
                "no subscriptions (quorvelle subscribe <server> <channel> --dir <path>)"));
    }
    return name ? syncNamed(subscriptions, *name, force) : syncAll(subscriptions, server, force);
}

int syncSubscription(const QJsonObject& subscription, QJsonArray* results, bool force) {
    const QString name = subscription.value(u"name").toString();
    QJsonObject result{{QStringLiteral("name"), name}};
    int code = kExitSuccess;
    bool ended = false;
    QEventLoop loop;
    Syncer syncer;
    ProgressReport report(name);

    const auto end = [&](const char* outcome, const QString& message, int outcomeCode) {
        result.insert(QStringLiteral("result"), QLatin1String(outcome));
        result.insert(QStringLiteral("message"), message);
        if (!jsonMode()) {
            outcomeCode == kExitFailed ? printError(message) : printProgress(message);
        }
        report.end(outcomeCode == kExitSuccess   ? WorkEnd::kDone
                   : outcomeCode == kExitBlocked ? WorkEnd::kBlocked
                                                 : WorkEnd::kFailed,
                   message);
        code = outcomeCode;
        ended = true;
        loop.quit();
    };
    QObject::connect(&syncer, &Syncer::progress, &loop,
                     [](const QString& message) { printProgress(message); });
    QObject::connect(&syncer, &Syncer::percentLine, &loop, [&](const QString& message) {
        if (!report.isShown()) {
            printProgress(message);
        }
    });
    QObject::connect(&syncer, &Syncer::stepped, &loop, [&](WorkStep step) { report.begin(step); });
    QObject::connect(&syncer, &Syncer::buildKnown, &loop,
                     [&](const QString& build) { report.setBuild(build); });
    QObject::connect(
        &syncer, &Syncer::moved, &loop,
        [&](qint64 bytes, std::optional<qint64> total) { report.moved(bytes, total); });
    QObject::connect(&syncer, &Syncer::finished, &loop,
                     [&](bool downloaded, const QString& message) {
                         end(downloaded ? "synced" : "current", message, kExitSuccess);
                     });
    QObject::connect(&syncer, &Syncer::blocked, &loop,
                     [&](const QString& build, const QString& message) {
                         result.insert(QStringLiteral("build"), build);
                         end("blocked", message, kExitBlocked);
                     });
    QObject::connect(&syncer, &Syncer::failed, &loop,
                     [&](const QString& message) { end("failed", message, kExitFailed); });
    QObject::connect(&syncer, &Syncer::noted, &loop,
                     [](const QString& message) { printNote(message); });

    syncer.start(subscription, force);
    // A sync may end before it has to wait, and a loop cannot be quit before it runs.
    if (!ended) {
        loop.exec();
    }
    if (results != nullptr) {
        results->append(result);
    }
    return code;
}

}  // namespace quorvelle
