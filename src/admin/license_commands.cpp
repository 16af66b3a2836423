#include "admin/commands.h"

#include <QJsonDocument>

#include "admin/licensing_service.h"
#include "admin/reply_text.h"
#include "config/json_number.h"
#include "console/arguments.h"
#include "console/exit_code.h"
#include "console/output.h"
#include "console/usage.h"
#include "server/on_server.h"

namespace quorvelle {

namespace {

/// The pattern filled with the key's text; nothing when the license does not say.
QString part(const QJsonObject& license, QStringView key, const QString& pattern) {
    const QString text = license.value(key).toVariant().toString();
    return text.isEmpty() ? QString() : pattern.arg(text);
}

QString seatsLine(const QJsonObject& license) {
    const qint64 used = wholeNumberIn(license.value(u"seats_used"));
    const qint64 cap = wholeNumberIn(license.value(u"seats_cap"));
    if (cap <= 0) {
        return QStringLiteral(
                   "Privileged seats in use: %1 (admins + publishers; no seat limit on this "
                   "license)")
            .arg(used);
    }
    return QStringLiteral("Seats: %1 of %2 privileged seats used (admins + publishers)%3")
        .arg(QString::number(used), QString::number(cap),
             used < cap ? QString()
                        : QStringLiteral(" - all seats taken: add seats or disable a user"));
}

Lines licenseText(const QString& server, const QJsonObject& license) {
    return {QStringLiteral("License on %1: ").arg(server) + license.value(u"status").toString() +
                part(license, u"tier", QStringLiteral(" (%1)")) +
                part(license, u"licensee", QStringLiteral(", licensee '%1'")) +
                part(license, u"expires", QStringLiteral(", through %1")) +
                part(license, u"days_left", QStringLiteral(", %1 days left")),
            seatsLine(license)};
}

/// What the server says of the license that it installed; the license itself says the rest.
QString trialText(const QString& server, const QJsonObject& trial, const QJsonObject& installed) {
    const auto value = [&](const QString& key) {
        return installed.contains(key) ? installed.value(key) : trial.value(key);
    };
    return QStringLiteral("Trial installed on %1: %2 for '%3', %4 days (through %5)\n")
        .arg(server, value(QStringLiteral("tier")).toString(),
             value(QStringLiteral("licensee")).toString(),
             wholeNumber(value(QStringLiteral("days_left"))),
             value(QStringLiteral("expires")).toString());
}

}  // namespace

int licenseCommand(QStringList args) {
    return onServer(std::move(args), 0, [](const Server& server, QStringList&) {
        const Reply reply =
            getJson(server, QStringLiteral("/api/license"), QStringLiteral("license"));
        return finish(reply, licenseText(server.url, reply.object));
    });
}

int requestTrialCommand(QStringList args) {
    return onServer(std::move(args), [](const Server& server, QStringList& rest) {
        const QString licensee = takeOption(rest, QStringLiteral("--name"));
        if (!rest.isEmpty()) {
            return printUsage();
        }
        if (licensee.isEmpty()) {
            return failWith(kExitUsage, QStringLiteral("--name <licensee> is required"));
        }
        const std::optional<QJsonObject> trial = requestTrialLicense(licensee);
        if (!trial) {
            return kExitFailed;
        }
        const Reply reply = postJson(server, QStringLiteral("/api/license"),
                                     QStringLiteral("install trial"), *trial);
        if (!reply.ok) {
            // The service may give one license a name, so this one must not be lost.
            printNote({QStringLiteral("The license that was not installed:"),
                       QString::fromUtf8(QJsonDocument(*trial).toJson(QJsonDocument::Compact))});
        }
        return finish(reply, trialText(server.url, *trial, reply.object));
    });
}

int cloudPortalCommand(QStringList args) {
    return listOnServer(std::move(args), [](const Server& server, QStringList&) {
        const Reply reply =
            getJson(server, QStringLiteral("/api/cloud/portal"), QStringLiteral("cloud portal"));
        return finish(reply,
                      {QStringLiteral("Billing portal (open in a browser, link is short-lived):"),
                       reply.object.value(u"url").toString()});
    });
}

}  // namespace quorvelle
