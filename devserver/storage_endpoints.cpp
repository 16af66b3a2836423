#include "settings_endpoints.h"
#include "tide/store/s3_provider.h"

namespace quorvelle::devserver {

namespace {

constexpr qsizetype kHintLength = 4;
const Refusal kNotConfigured{409, QStringLiteral("no build storage is configured")};

QJsonObject storageOf(const Service& s) {
    return s.settings.read()[u"storage"].toObject();
}

Reply showStorage(const Service& s) {
    QJsonObject storage = storageOf(s);
    const QString key = storage[u"access_key"].toString();
    storage.remove(u"access_key");
    storage.remove(u"secret_key");
    if (!storage.isEmpty()) {
        storage[u"access_key_hint"] =
            key.first(qMin(kHintLength, key.size())) + QStringLiteral("...");
    }
    storage[u"configured"] = !storage.isEmpty();
    return storage;
}

Reply setStorage(const Call& call, Service& s) {
    QJsonObject storage;
    if (const auto refusal = takeTexts(
            jsonBody(call),
            {QStringLiteral("endpoint"), QStringLiteral("region"), QStringLiteral("bucket"),
             QStringLiteral("access_key"), QStringLiteral("secret_key")},
            QStringLiteral("build storage"), storage)) {
        return *refusal;
    }
    return s.settings.set(QStringLiteral("storage"), storage,
                          {{QStringLiteral("bucket"), storage[u"bucket"]}});
}

Reply testStorage(const Service& s) {
    const QJsonObject storage = storageOf(s);
    if (storage.isEmpty()) {
        return kNotConfigured;
    }
    const auto text = [&](QStringView key) { return storage[key].toString().toStdString(); };
    tide::S3Provider bucket({.endpoint = text(u"endpoint"),
                             .region = text(u"region"),
                             .bucket = text(u"bucket"),
                             .accessKeyId = text(u"access_key"),
                             .secretAccessKey = text(u"secret_key")});
    std::string body;
    std::string error;
    long status = 0;
    if (!bucket.request("GET", {}, "list-type=2&max-keys=1", {}, body, status, nullptr, &error)) {
        return Refusal{
            502,
            QStringLiteral("the bucket cannot be reached: %1").arg(QString::fromStdString(error))};
    }
    if (!tide::isSuccess(status)) {
        return Refusal{502, QStringLiteral("the bucket answers HTTP %1").arg(status)};
    }
    return QJsonObject{{QStringLiteral("bucket"), storage[u"bucket"]}};
}

}  // namespace

void addStorageEndpoints(Router& router, Service& s) {
    router.addForAdmins("GET", u"api/storage", [&s](const Call&) { return showStorage(s); });
    router.addForAdmins("PUT", u"api/storage",
                        [&s](const Call& call) { return setStorage(call, s); });
    router.addForAdmins("POST", u"api/storage/test", [&s](const Call&) { return testStorage(s); });
    router.addForAdmins("DELETE", u"api/storage",
                        [&s](const Call&) { return s.settings.remove(QStringLiteral("storage")); });
}

}  // namespace quorvelle::devserver
