#pragma once

#include <QJsonObject>
#include <QString>
#include <QStringList>
#include <optional>

/// What a server's assignments mean for the configuration. Pure functions; the document
/// is described in config/config_document.h.

namespace quorvelle {

/// The outcome of comparing one server's assignments with the subscriptions.
struct ReconcilePlan {
    /// The configuration to save.
    QJsonObject document;
    /// One line per change, in the order made; none means that nothing is to be saved.
    QStringList changes;
    /// One error text per assigned channel that cannot be subscribed.
    QStringList refused;
};

/// The channel names of an "/api/me" reply. Nothing when the reply holds no list of names:
/// then it says nothing about assignments, and nobody is to lose a subscription.
std::optional<QStringList> assignedChannels(const QJsonObject& reply);

/// Retires the managed subscriptions of the server in `entry` (a "servers" entry) whose
/// channel is no longer assigned, then subscribes every assigned channel that no
/// subscription of this server follows, below the entry's install root, in a folder that no
/// other subscription's meets. Subscriptions made by hand and those of other servers stay as
/// they are.
ReconcilePlan planReconcile(const QJsonObject& document, const QJsonObject& entry,
                            const QStringList& assigned);

}  // namespace quorvelle
