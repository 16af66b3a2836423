#include "admin/licensing_service.h"

#include "console/output.h"
#include "server/addresses.h"
#include "server/requests.h"

namespace quorvelle {

namespace {

constexpr int kUnauthorized = 401;
constexpr int kTooManyRequests = 429;

QString fromEnvironment(const char* variable, QLatin1String builtIn) {
    const QString value = qEnvironmentVariable(variable);
    return value.isEmpty() ? QString(builtIn) : value;
}

/// Why the service gave no license. The two refusals that a user can act on have texts
/// of their own, whatever the service says to them.
QString refusalText(const Answer& answer, const QString& base) {
    if (answer.status < 300) {
        return QStringLiteral("could not reach the licensing service at %1").arg(base);
    }
    if (answer.status == kUnauthorized) {
        return QStringLiteral("the licensing service rejected this client (bad or missing token)");
    }
    if (answer.status == kTooManyRequests) {
        return QStringLiteral("rate limited by the licensing service - try again shortly");
    }
    const QString own = answer.object.value(u"error").toString();
    return own.isEmpty() ? QStringLiteral("licensing service returned HTTP %1").arg(answer.status)
                         : own;
}

}  // namespace

std::optional<QJsonObject> requestTrialLicense(const QString& licensee) {
    const QString base = fromEnvironment("QUORVELLE_TRIAL_URL", kLicensingService);
    const Answer answer =
        askJson({.url = base, .token = fromEnvironment("QUORVELLE_TRIAL_TOKEN", kLicensingToken)},
                QStringLiteral("/api/trial"), {{QStringLiteral("name"), licensee}});
    if (!answer.ok) {
        printError(refusalText(answer, base));
        return std::nullopt;
    }
    const QString refusal = answer.object.value(u"error").toString();
    const bool isRefusal = answer.object.size() == 1 && answer.object.contains(u"error");
    if (isRefusal || answer.object.isEmpty()) {
        printError(refusal.isEmpty() ? QStringLiteral("the licensing service sent no license")
                                     : refusal);
        return std::nullopt;
    }
    return answer.object;
}

}  // namespace quorvelle
