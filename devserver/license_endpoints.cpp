#include <QDate>

#include "settings_endpoints.h"

namespace quorvelle::devserver {

namespace {

constexpr int kTrialDays = 30;
constexpr int kTrialSeats = 5;
constexpr char kPortal[] = "/cloud/portal";
constexpr char kPortalPage[] = R"(<!doctype html><meta charset=utf-8><title>Billing</title>
<h2>Quorvelle development server</h2>
<p>Nothing has to be paid here. License: %1. Seats in use: %2.</p>
)";

QJsonObject showLicense(const Service& s) {
    QJsonObject license = s.settings.read()[u"license"].toObject();
    if (license.isEmpty()) {
        license[u"status"] = QStringLiteral("none");
    } else {
        const QDate end = QDate::fromString(license[u"expires"].toString(), Qt::ISODate);
        const qint64 left = QDate::currentDate().daysTo(end);
        license[u"status"] = left < 0 ? QStringLiteral("expired") : QStringLiteral("valid");
        license[u"days_left"] = qMax(left, 0);
    }
    license[u"seats_used"] = privilegedSeats(s.people.read());
    return license;
}

Reply install(const Call& call, Service& s) {
    const QJsonObject given = jsonBody(call);
    QJsonObject license{{QStringLiteral("seats_cap"), given[u"seats_cap"].toInt()}};
    for (const QString& key :
         {QStringLiteral("tier"), QStringLiteral("licensee"), QStringLiteral("expires")}) {
        license[key] = given[key].toString();
    }
    if (license[u"tier"].toString().isEmpty() || license[u"licensee"].toString().isEmpty() ||
        !QDate::fromString(license[u"expires"].toString(), Qt::ISODate).isValid()) {
        return Refusal{400, QStringLiteral("a license names its tier, its licensee and the day "
                                           "it expires on")};
    }
    const Reply reply = s.settings.set(QStringLiteral("license"), license, {});
    return std::holds_alternative<Refusal>(reply) ? reply : showLicense(s);
}

Reply giveTrial(const Call& call) {
    const QString name = jsonBody(call)[u"name"].toString();
    if (name.isEmpty()) {
        return Refusal{400, QStringLiteral("a trial needs the name of a licensee")};
    }
    return QJsonObject{
        {QStringLiteral("tier"), QStringLiteral("trial")},
        {QStringLiteral("licensee"), name},
        {QStringLiteral("expires"), QDate::currentDate().addDays(kTrialDays).toString(Qt::ISODate)},
        {QStringLiteral("days_left"), kTrialDays},
        {QStringLiteral("seats_cap"), kTrialSeats}};
}

Reply linkToPortal(const Call& call, const Service& s) {
    return QJsonObject{{QStringLiteral("url"),
                        QStringLiteral("http://") + call.host + s.signer.openPath(kPortal)}};
}

Reply showPortal(const Call& call, const Service& s) {
    if (!s.signer.isOpen(kPortal, call.item(u"expires"), call.item(u"sig"))) {
        return Refusal{403, QStringLiteral("the link has expired, or its signature is wrong")};
    }
    const QJsonObject license = showLicense(s);
    return Page{QString(kPortalPage)
                    .arg(license[u"status"].toString())
                    .arg(license[u"seats_used"].toInt())};
}

}  // namespace

void addLicenseEndpoints(Router& router, Service& s) {
    router.addForAdmins("GET", u"api/license", [&s](const Call&) { return showLicense(s); });
    router.addForAdmins("POST", u"api/license",
                        [&s](const Call& call) { return install(call, s); });
    // A licensing service knows its clients, not this server's users.
    router.add("POST", u"api/trial", giveTrial, Router::Access::kOpen);
    router.addForAdmins("GET", u"api/cloud/portal",
                        [&s](const Call& call) { return linkToPortal(call, s); });
    router.add(
        "GET", u"cloud/portal", [&s](const Call& call) { return showPortal(call, s); },
        Router::Access::kOpen);
}

}  // namespace quorvelle::devserver
