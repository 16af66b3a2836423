#include "account/reconciler.h"

#include <optional>

#include "account/reconcile_plan.h"
#include "config/config_file.h"
#include "server/http_exchange.h"
#include "server/url.h"

namespace quorvelle {

void Reconciler::start(const QJsonObject& serverEntry) {
    entry = serverEntry;
    const HttpRequest request{.method = "GET",
                              .url = apiUrl(server(), QStringLiteral("/api/me")),
                              .token = entry.value(u"token").toString()};
    runOwned(std::make_unique<HttpExchange>(network, request), *this,
             [this](const HttpExchange& ended) { onReply(ended); });
}

void Reconciler::onReply(const HttpExchange& exchange) {
    if (!exchange.succeeded()) {
        fail(exchange.failureReason());
    } else if (const auto assigned = assignedChannels(exchange.object())) {
        apply(*assigned);
    } else {
        fail(QStringLiteral("the reply holds no channel list"));
    }
}

void Reconciler::apply(const QStringList& assigned) {
    ReconcilePlan plan;
    const auto outcome = config::change([&](QJsonObject& document) {
        plan = planReconcile(document, entry, assigned);
        document = plan.document;
        return !plan.changes.isEmpty();
    });
    if (outcome == config::Changed::kNotSaved) {
        Q_EMIT finished(false, {QStringLiteral("%1: could not write config").arg(server())}, {});
        return;
    }
    Q_EMIT finished(plan.refused.isEmpty(), plan.refused, plan.changes);
}

void Reconciler::fail(const QString& reason) {
    Q_EMIT finished(false, {QStringLiteral("%1: reconcile failed: %2").arg(server(), reason)}, {});
}

QString Reconciler::server() const {
    return entry.value(u"server").toString();
}

}  // namespace quorvelle
