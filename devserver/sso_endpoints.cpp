#include <QJsonDocument>
#include <algorithm>

#include "settings_endpoints.h"
#include "tide/store/http.h"

namespace quorvelle::devserver {

namespace {

constexpr char kDiscovery[] = "/.well-known/openid-configuration";
constexpr std::uint64_t kMaxDiscovery = 1024 * 1024;

QJsonObject configOf(const Service& s) {
    return s.settings.read()[u"sso"].toObject();
}

Reply showConfig(const Service& s) {
    QJsonObject config = configOf(s);
    const bool configured = !config.isEmpty();
    config[u"configured"] = configured;
    config[u"secret_set"] = configured;
    config.remove(u"client_secret");
    return config;
}

Reply setConfig(const Call& call, Service& s) {
    const QJsonObject given = jsonBody(call);
    QJsonObject config{{QStringLiteral("scopes"), given[u"scopes"].toString()}};
    if (config[u"scopes"].toString().isEmpty()) {
        config[u"scopes"] = QStringLiteral("openid profile email");
    }
    if (const auto refusal = takeTexts(given,
                                       {QStringLiteral("issuer"), QStringLiteral("client_id"),
                                        QStringLiteral("client_secret")},
                                       QStringLiteral("a single sign-on"), config)) {
        return *refusal;
    }
    return s.settings.set(QStringLiteral("sso"), config,
                          {{QStringLiteral("issuer"), config[u"issuer"]}});
}

/// Asks the provider for its description of itself.
Reply testConfig(const Service& s) {
    QString issuer = configOf(s)[u"issuer"].toString();
    if (issuer.isEmpty()) {
        return Refusal{409, QStringLiteral("no single sign-on is configured")};
    }
    while (issuer.endsWith('/')) {
        issuer.chop(1);
    }
    std::string body;
    std::string error;
    long status = 0;
    if (!tide::httpGet((issuer + kDiscovery).toStdString(), body, status, &error, {},
                       {.maxBody = kMaxDiscovery})) {
        return Refusal{502, QStringLiteral("the provider cannot be reached: %1")
                                .arg(QString::fromStdString(error))};
    }
    const QJsonObject described = QJsonDocument::fromJson(QByteArray::fromStdString(body)).object();
    const QString endpoint = described[u"authorization_endpoint"].toString();
    if (!tide::isSuccess(status) || endpoint.isEmpty()) {
        return Refusal{
            502,
            QStringLiteral("nothing at %1 describes a provider (HTTP %2)").arg(issuer).arg(status)};
    }
    return QJsonObject{{QStringLiteral("authorization_endpoint"), endpoint}};
}

Reply describe(const Call& call) {
    const QString self = QStringLiteral("http://") + call.host;
    return QJsonObject{
        {QStringLiteral("issuer"), self},
        {QStringLiteral("authorization_endpoint"), self + QStringLiteral("/api/sso/start")}};
}

Reply showMapping(const Service& s) {
    const QJsonObject settings = s.settings.read();
    QJsonObject mapping = settings[u"sso_mapping"].toObject();
    if (mapping.isEmpty()) {
        mapping = {{QStringLiteral("roles_claim"), QStringLiteral("roles")},
                   {QStringLiteral("groups_claim"), QStringLiteral("groups")},
                   {QStringLiteral("default_role"), QStringLiteral("member")},
                   {QStringLiteral("roles"), QJsonObject()},
                   {QStringLiteral("groups"), QJsonObject()}};
    }
    return QJsonObject{{QStringLiteral("configured"), settings.contains(u"sso")},
                       {QStringLiteral("mapping"), mapping}};
}

bool isTextTable(const QJsonValue& value) {
    const QJsonObject table = value.toObject();
    return value.isObject() && std::all_of(table.begin(), table.end(),
                                           [](const QJsonValue& v) { return v.isString(); });
}

Reply setMapping(const Call& call, Service& s) {
    const QJsonObject given = jsonBody(call);
    QJsonObject mapping;
    for (const QString& key : {QStringLiteral("roles_claim"), QStringLiteral("groups_claim"),
                               QStringLiteral("default_role")}) {
        mapping[key] = given[key].toString();
    }
    for (const QString& key : {QStringLiteral("roles"), QStringLiteral("groups")}) {
        if (!isTextTable(given[key])) {
            return Refusal{400,
                           QStringLiteral("a mapping needs '%1', an object of texts").arg(key)};
        }
        mapping[key] = given[key];
    }
    for (const QJsonValue& role : mapping[u"roles"].toObject()) {
        if (!isRole(role.toString())) {
            return noRole(role.toString());
        }
    }
    const QString byDefault = mapping[u"default_role"].toString();
    if (!isRole(byDefault)) {
        return noRole(byDefault);
    }
    return s.settings.set(QStringLiteral("sso_mapping"), mapping,
                          {{QStringLiteral("mapping"), mapping}});
}

}  // namespace

void addSsoEndpoints(Router& router, Service& s) {
    router.addForAdmins("GET", u"api/sso/config", [&s](const Call&) { return showConfig(s); });
    router.addForAdmins("PUT", u"api/sso/config",
                        [&s](const Call& call) { return setConfig(call, s); });
    router.addForAdmins("POST", u"api/sso/config/test",
                        [&s](const Call&) { return testConfig(s); });
    router.addForAdmins("DELETE", u"api/sso/config",
                        [&s](const Call&) { return s.settings.remove(QStringLiteral("sso")); });
    router.addForAdmins("GET", u"api/sso/mapping", [&s](const Call&) { return showMapping(s); });
    router.addForAdmins("PUT", u"api/sso/mapping",
                        [&s](const Call& call) { return setMapping(call, s); });
    router.add("GET", QString(kDiscovery).mid(1), describe, Router::Access::kOpen);
}

}  // namespace quorvelle::devserver
