#include "admin/commands.h"
#include "admin/sub_words.h"

#include "admin/bucket_options.h"
#include "console/exit_code.h"
#include "console/output.h"
#include "console/usage.h"
#include "server/on_server.h"

namespace quorvelle {

namespace {

const QString kStoragePath = QStringLiteral("/api/storage");

Lines storageText(const QString& server, const QJsonObject& storage) {
    if (!storage.value(u"configured").toBool()) {
        return {QStringLiteral("Build storage: not configured on %1").arg(server)};
    }
    return lines(
        QStringLiteral(
            "Build storage on %1:\n  endpoint: %2\n  region: %3\n  bucket: %4\n  key: %5"),
        {server, storage.value(u"endpoint").toString(), storage.value(u"region").toString(),
         storage.value(u"bucket").toString(), storage.value(u"access_key_hint").toString()});
}

int showStorage(const Server& server, QStringList&) {
    const Reply reply = getJson(server, kStoragePath, QStringLiteral("storage show"));
    return finish(reply, storageText(server.url, reply.object));
}

int testStorage(const Server& server, QStringList&) {
    const Reply reply =
        postEmpty(server, QStringLiteral("/api/storage/test"), QStringLiteral("storage test"));
    return finish(
        reply,
        QStringLiteral("Bucket reachable: '%1'\n").arg(reply.object.value(u"bucket").toString()));
}

int setStorage(const Server& server, QStringList& args) {
    const BucketOptions options = takeBucketOptions(args);
    if (!args.isEmpty()) {
        return printUsage();
    }
    if (!options.complete()) {
        return failWith(
            kExitUsage,
            QStringLiteral("storage set needs --endpoint --bucket --access-key --secret-key"));
    }
    const Reply reply =
        putJson(server, kStoragePath, QStringLiteral("storage set"), options.json());
    return finish(reply, QStringLiteral("Build storage connected: bucket '%1'\n")
                             .arg(reply.object.value(u"bucket").toString()));
}

int forgetStorage(const Server& server, QStringList&) {
    const Reply reply = deleteResource(server, kStoragePath, QStringLiteral("storage forget"));
    return finish(reply, QStringLiteral("Build storage forgotten on %1\n").arg(server.url));
}

}  // namespace

int storageSettingsCommand(QStringList args) {
    return onSubWord(std::move(args), {{QStringLiteral("show"), showStorage},
                                       {QStringLiteral("test"), testStorage},
                                       {QStringLiteral("set"), setStorage, true},
                                       {QStringLiteral("forget"), forgetStorage}});
}

}  // namespace quorvelle
