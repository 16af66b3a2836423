#include "launch/admin_targets.h"

#include <QEventLoop>
#include <QNetworkAccessManager>
#include <QTimer>

#include "config/config_document.h"
#include "server/http_exchange.h"
#include "server/server_option.h"
#include "server/url.h"

namespace quorvelle {

namespace {

constexpr int kAnswerLimitMs = 5000;

QString tokenFor(const QJsonObject& document, const QJsonObject& subscription) {
    const QString own = subscription.value(u"token").toString();
    if (!own.isEmpty()) {
        return own;
    }
    const QString server =
        config::storedServerUrl(document, subscription.value(u"server").toString());
    const QString stored = config::findServer(document, server).value(u"token").toString();
    return stored.isEmpty() ? resolveToken() : stored;
}

}  // namespace

QJsonArray fetchAdminTargets(const QJsonObject& document, const QJsonObject& subscription) {
    const QString path =
        apiPath(QStringLiteral("/api/channels/%1"), subscription.value(u"channel").toString());
    QNetworkAccessManager network;
    HttpExchange exchange(network, {.method = "GET",
                                    .url = apiUrl(subscription.value(u"server").toString(), path),
                                    .token = tokenFor(document, subscription)});
    QEventLoop loop;
    bool answered = false;
    QObject::connect(&exchange, &HttpExchange::finished, &loop, [&] {
        answered = exchange.succeeded();
        loop.quit();
    });
    QTimer::singleShot(kAnswerLimitMs, &loop, &QEventLoop::quit);
    exchange.start();
    loop.exec();
    return answered ? exchange.object().value(u"launch_targets").toArray() : QJsonArray();
}

}  // namespace quorvelle
