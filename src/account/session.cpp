#include "account/session.h"

#include <QStringList>

#include "config/config_document.h"
#include "config/config_file.h"
#include "console/output.h"

namespace quorvelle {

std::optional<QJsonObject> storeSession(const QString& server, const QJsonObject& answer,
                                        const QString& explicitRoot, const QString& label) {
    const QString token = answer.value(u"token").toString();
    if (token.isEmpty()) {
        printError(QStringLiteral("%1 failed: the reply holds no token").arg(label));
        return std::nullopt;
    }
    config::Change change;
    // Subscriptions that came with the last sign-in would go on with a token that may be void.
    const QString before = config::findServer(change.document, server).value(u"token").toString();
    if (!before.isEmpty()) {
        config::setSubscriptionTokens(change.document, server, token, before);
    }
    config::upsertServer(change.document, server, token,
                         config::installRootFor(change.document, server, explicitRoot));
    if (!change.save()) {
        printError(QStringLiteral("could not write config - your token (save it!): %1").arg(token));
        return std::nullopt;
    }
    return config::findServer(change.document, server);
}

QString sessionText(const QString& opening, const QString& server, const QJsonObject& answer) {
    QStringList groups;
    for (const QJsonValue& group : answer.value(u"groups").toArray()) {
        groups.append(group.toString());
    }
    return QStringLiteral("%1 %2 as '%3' (%4)\nGroups: %5\n")
        .arg(opening, server, answer.value(u"user").toString(), answer.value(u"role").toString(),
             groups.isEmpty() ? QStringLiteral("(none)") : groups.join(QStringLiteral(", ")));
}

}  // namespace quorvelle
