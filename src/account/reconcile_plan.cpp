#include "account/reconcile_plan.h"

#include <QJsonArray>
#include <QRegularExpression>
#include <algorithm>

#include "config/config_document.h"
#include "config/config_file.h"
#include "config/install_folders.h"
#include "config/subscription.h"
#include "files/free_name.h"
#include "files/safe_path.h"

namespace quorvelle {

namespace {

constexpr int kDefaultInterval = -1;

/// Whether the folder that holds the state of install directories beside it has this name,
/// or may have it on Windows as the short one that file systems there give it.
bool namesStateFolder(const QString& channel) {
    static const QRegularExpression names(QRegularExpression::anchoredPattern(QStringLiteral(
                                              "\\.quorvelle|(?:quorve|qu[0-9a-f]{4})~[0-9]+")),
                                          QRegularExpression::CaseInsensitiveOption);
    return names.match(channel).hasMatch();
}

bool canBeFolderName(const QString& channel) {
    return files::isSafeRelativePath(channel.toStdString()) && !channel.contains(u'/') &&
           !namesStateFolder(channel);
}

/// One server's look at the subscriptions.
struct ServersView {
    const QJsonObject& document;
    const QString server;

    bool owns(const QJsonValue& subscription) const {
        return config::isOnServer(document, subscription.toObject(), server);
    }
};

bool follows(const QJsonArray& subscriptions, const ServersView& view, const QString& channel) {
    return std::any_of(subscriptions.begin(), subscriptions.end(),
                       [&](const QJsonValue& subscription) {
                           return view.owns(subscription) && subscription[u"channel"] == channel;
                       });
}

QString nameFor(const QJsonArray& subscriptions, const QString& channel) {
    return freeName(channel, [&subscriptions](const QString& name) {
        return config::indexOfSubscription(subscriptions, name) >= 0;
    });
}

QStringList foldersOf(const QJsonArray& subscriptions) {
    QStringList folders;
    for (const QJsonValue& subscription : subscriptions) {
        folders.append(subscription[u"dir"].toString());
    }
    return folders;
}

QJsonArray retire(const QJsonArray& subscriptions, const ServersView& view,
                  const QStringList& assigned, QStringList& changes) {
    QJsonArray kept;
    for (const QJsonValue& subscription : subscriptions) {
        if (subscription[u"managed"].toBool() && view.owns(subscription) &&
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
    const ServersView view{document, server};
    ReconcilePlan plan{.document = document, .changes = {}, .refused = {}};
    // Retired first, so that their names and folders are free for what is new.
    QJsonArray subscriptions =
        retire(config::subscriptions(document), view, assigned, plan.changes);
    for (const QString& channel : assigned) {
        if (follows(subscriptions, view, channel)) {
            continue;
        }
        if (!canBeFolderName(channel)) {
            plan.refused.append(QStringLiteral("%1: channel '%2' cannot be a folder name - "
                                               "subscribe to it by hand")
                                    .arg(server, channel));
            continue;
        }
        if (root.isEmpty()) {
            plan.refused.append(config::noHomeFolder());
            continue;
        }
        const auto folder = config::freeFolder(root, channel, foldersOf(subscriptions));
        if (!folder) {
            plan.refused.append(config::noFreeFolder(server, channel, root));
            continue;
        }
        const QString name = nameFor(subscriptions, channel);
        subscriptions.append(
            QJsonObject{{QStringLiteral("name"), name},
                        {QStringLiteral("server"), server},
                        {QStringLiteral("channel"), channel},
                        {QStringLiteral("dir"), *folder},
                        {QStringLiteral("interval_seconds"), kDefaultInterval},
                        {QStringLiteral("self_heal"), static_cast<int>(SelfHeal::kDefault)},
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
