#include "launch/admin_targets.h"

#include <QNetworkAccessManager>

#include "server/await_exchange.h"
#include "server/http_exchange.h"
#include "server/server_option.h"
#include "server/url.h"

namespace quorvelle {

namespace {

constexpr std::chrono::seconds kAnswerLimit(5);

}  // namespace

QJsonArray fetchAdminTargets(const QJsonObject& document, const QJsonObject& subscription) {
    const QString url = subscription.value(u"server").toString();
    const QString own = subscription.value(u"token").toString();
    const QString path =
        apiPath(QStringLiteral("/api/channels/%1"), subscription.value(u"channel").toString());
    QNetworkAccessManager network;
    HttpExchange exchange(network, {.method = "GET",
                                    .url = apiUrl(url, path),
                                    .token = own.isEmpty() ? tokenFor(document, url) : own});
    return awaitFor(exchange, {kAnswerLimit, {}}) && exchange.succeeded()
               ? exchange.object().value(u"launch_targets").toArray()
               : QJsonArray();
}

}  // namespace quorvelle
