#include "admin/storage_commands.h"

#include "admin/bucket_options.h"
#include "console/exit_code.h"
#include "console/output.h"
#include "console/usage.h"
#include "server/on_server.h"

namespace quorvelle {

namespace {

const QString kStoragePath = QStringLiteral("/api/storage");

QString storageText(const QString& server, const QJsonObject& storage) {
    if (!storage.value(u"configured").toBool()) {
        return QStringLiteral("Build storage: not configured on %1\n").arg(server);
    }
    return QStringLiteral(
               "Build storage on %1:\n  endpoint: %2\n  region: %3\n  bucket: %4\n  key: %5\n")
        .arg(server, storage.value(u"endpoint").toString(), storage.value(u"region").toString(),
             storage.value(u"bucket").toString(), storage.value(u"access_key_hint").toString());
}

int showStorage(const QString& server) {
    const Reply reply = getJson(server, kStoragePath, QStringLiteral("storage show"));
    return finish(reply, storageText(server, reply.object));
}

int testStorage(const QString& server) {
    const Reply reply =
        postEmpty(server, QStringLiteral("/api/storage/test"), QStringLiteral("storage test"));
    return finish(
        reply,
        QStringLiteral("Bucket reachable: '%1'\n").arg(reply.object.value(u"bucket").toString()));
}

int setStorage(const QString& server, QStringList& args) {
    const BucketOptions options = takeBucketOptions(args);
    if (!args.isEmpty()) {
        return printUsage();
    }
    if (!options.complete()) {
        printError(
            QStringLiteral("storage set needs --endpoint --bucket --access-key --secret-key"));
        return kExitUsage;
    }
    const Reply reply =
        putJson(server, kStoragePath, QStringLiteral("storage set"), options.json());
    return finish(reply, QStringLiteral("Build storage connected: bucket '%1'\n")
                             .arg(reply.object.value(u"bucket").toString()));
}

int forgetStorage(const QString& server) {
    const Reply reply = deleteResource(server, kStoragePath, QStringLiteral("storage forget"));
    return finish(reply, QStringLiteral("Build storage forgotten on %1\n").arg(server));
}

}  // namespace

int storageCommand(QStringList args) {
    return onServer(std::move(args), [](const QString& server, QStringList& rest) {
        const QString word = rest.isEmpty() ? QString() : rest.takeFirst();
        if (word == u"set") {
            return setStorage(server, rest);
        }
        if (rest.isEmpty() && word == u"show") {
            return showStorage(server);
        }
        if (rest.isEmpty() && word == u"test") {
            return testStorage(server);
        }
        if (rest.isEmpty() && word == u"forget") {
            return forgetStorage(server);
        }
        return printUsage();
    });
}

}  // namespace quorvelle
