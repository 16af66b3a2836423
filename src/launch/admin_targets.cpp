#include "launch/admin_targets.h"

#include <QNetworkAccessManager>
#include <optional>

#include "launch/target_list.h"
#include "server/await_exchange.h"
#include "server/http_exchange.h"
#include "server/server_option.h"
#include "server/url.h"

namespace quorvelle {

namespace {

constexpr std::chrono::seconds kAnswerLimit(15);

}  // namespace

AdminTargets fetchAdminTargets(const QJsonObject& document, const QJsonObject& subscription) {
    const QString url = subscription.value(u"server").toString();
    const QString own = subscription.value(u"token").toString();
    const QString path =
        apiPath(QStringLiteral("/api/channels/%1"), subscription.value(u"channel").toString());
    QNetworkAccessManager network;
    HttpExchange exchange(network, {.method = "GET",
                                    .url = apiUrl(url, path),
                                    .token = own.isEmpty() ? tokenFor(document, url) : own});
    awaitFor(exchange, {kAnswerLimit, QStringLiteral("no answer for 15 s")});
    const QString context = QStringLiteral("reading the channel's launch targets");
    if (!exchange.succeeded()) {
        return {.failure = exchange.failureText(context)};
    }
    const auto targets = exchange.isOtherThanObject() ? std::nullopt : targetsOf(exchange.object());
    if (!targets) {
        return {.failure = exchange.failureText(
                    context, QStringLiteral("the reply holds no launch targets"))};
    }
    return {.targets = *targets};
}

}  // namespace quorvelle
