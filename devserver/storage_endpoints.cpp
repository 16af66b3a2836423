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
    const QJsonObject given = jsonBody(call);
    QJsonObject storage;
    for (const QString& key :
         {QStringLiteral("endpoint"), QStringLiteral("region"), QStringLiteral("bucket"),
          QStringLiteral("access_key"), QStringLiteral("secret_key")}) {
        storage[key] = given[key].toString();
        if (storage[key].toString().isEmpty()) {
            return Refusal{400, QStringLiteral("build storage needs '%1'").arg(key)};
        }
    }
    return s.settings.with([&](QJsonObject& settings) -> Reply {
        settings[u"storage"] = storage;
        return QJsonObject{{QStringLiteral("bucket"), storage[u"bucket"]}};
    });
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
    const auto add = [&](const char* method, QStringView path, auto endpoint) {
        router.add(method, path, endpoint, Router::Access::kAdmin);
    };
    add("GET", u"api/storage", [&s](const Call&) { return showStorage(s); });
    add("PUT", u"api/storage", [&s](const Call& call) { return setStorage(call, s); });
    add("POST", u"api/storage/test", [&s](const Call&) { return testStorage(s); });
    add("DELETE", u"api/storage", [&s](const Call&) {
        return s.settings.with([](QJsonObject& settings) -> Reply {
            settings.remove(u"storage");
            return QJsonObject();
        });
    });
}

}  // namespace quorvelle::devserver
