#include "account/reconcile_plan.h"

#include <QJsonArray>
#include <algorithm>

#include "config/config_document.h"
#include "files/safe_path.h"

namespace quorvelle {

namespace {

constexpr int kDefaultSetting = -1;

bool canBeFolderName(const QString& channel) {
    return files::isSafeRelativePath(channel.toStdString()) && !channel.contains(u'/') &&
           // The folder beside the install directories that holds their state.
           channel.compare(QStringLiteral(".quorvelle"), Qt::CaseInsensitive) != 0;
}

bool follows(const QJsonArray& subscriptions, const QString& server, const QString& channel) {
    return std::any_of(
        subscriptions.begin(), subscriptions.end(), [&](const QJsonValue& subscription) {
            return subscription[u"server"] == server && subscription[u"channel"] == channel;
        });
}

QString freeName(const QJsonArray& subscriptions, const QString& channel) {
    QString name = channel;
    for (int count = 2; config::indexOfSubscription(subscriptions, name) >= 0; ++count) {
        name = channel + u'-' + QString::number(count);
    }
    return name;
}

QString joined(const QString& root, const QString& name) {
    return root.endsWith(u'/') ? root + name : root + u'/' + name;
}

QJsonArray retire(const QJsonArray& subscriptions, const QString& server,
                  const QStringList& assigned, QStringList& changes) {
    QJsonArray kept;
    for (const QJsonValue& subscription : subscriptions) {
        if (subscription[u"managed"].toBool() && subscription[u"server"] == server &&
            !assigned.contains(subscription[u"channel"].toString())) {
            changes.append(QStringLiteral("retired '%1' (no longer assigned; files kept)")
                               .arg(subscription[u"name"].toString()));
        } else {
            kept.append(subscription);
        }
    }
    return kept;
}

}  // namespace

std::optional<QStringList> assignedChannels(const QJsonObject& reply) {
    const QJsonValue channels = reply.value(u"channels");
    if (!channels.isArray()) {
        return std::nullopt;
    }
    QStringList names;
    for (const QJsonValue& channel : channels.toArray()) {
        if (!channel.isString()) {
            return std::nullopt;
        }
        names.append(channel.toString());
    }
    return names;
}

ReconcilePlan planReconcile(const QJsonObject& document, const QJsonObject& entry,
                            const QStringList& assigned) {
    const QString server = entry.value(u"server").toString();
    const QString root =
        config::installRootFor(document, server, entry.value(u"install_root").toString());
    ReconcilePlan plan{.document = document, .changes = {}, .refused = {}};
    QJsonArray subscriptions =
        retire(config::subscriptions(document), server, assigned, plan.changes);
    for (const QString& channel : assigned) {
        if (follows(subscriptions, server, channel)) {
            continue;
        }
        if (!canBeFolderName(channel)) {
            plan.refused.append(QStringLiteral("%1: channel '%2' cannot be a folder name - "
                                               "subscribe to it by hand")
                                    .arg(server, channel));
            continue;
        }
        const QString name = freeName(subscriptions, channel);
        subscriptions.append(
            QJsonObject{{QStringLiteral("name"), name},
                        {QStringLiteral("server"), server},
                        {QStringLiteral("channel"), channel},
                        {QStringLiteral("dir"), joined(root, channel)},
                        {QStringLiteral("interval_seconds"), kDefaultSetting},
                        {QStringLiteral("self_heal"), kDefaultSetting},
                        {QStringLiteral("token"), entry.value(u"token").toString()},
                        {QStringLiteral("managed"), true}});
        plan.changes.append(QStringLiteral("subscribed '%1' (%2 @ %3)").arg(name, channel, server));
    }
    plan.refused.removeDuplicates();
    if (!plan.changes.isEmpty()) {
        plan.document.insert(QStringLiteral("subscriptions"), subscriptions);
    }
    return plan;
}

}  // namespace quorvelle
