#include "account/session.h"

#include <QStringList>

#include "config/config_document.h"
#include "config/config_file.h"
#include "console/output.h"

namespace quorvelle {

bool canStoreSession(const QString& server, const QString& explicitRoot) {
    const bool hasRoot = !config::installRootFor(config::load(), server, explicitRoot).isEmpty();
    if (!hasRoot) {
        printError(config::noHomeFolder());
    }
    return hasRoot;
}

std::optional<QJsonObject> storeSession(const QString& server, const QJsonObject& answer,
                                        const QString& explicitRoot, const QString& label) {
    const QString token = answer.value(u"token").toString();
    if (token.isEmpty()) {
        printError(QStringLiteral("%1 failed: the reply holds no token").arg(label));
        return std::nullopt;
    }
    QJsonObject entry;
    QStringList behind;
    const auto outcome = config::change([&](QJsonObject& document) {
        const QString before = config::serverEntry(document, server).value(u"token").toString();
        config::upsertServer(document, server, token,
                             config::installRootFor(document, server, explicitRoot));
        config::setSubscriptionTokens(document, server, token, config::Whose::kManaged);
        if (!before.isEmpty() && before != token) {
            behind = config::subscriptionsWithToken(document, server, before);
        }
        entry = config::serverEntry(document, server);
        return true;
    });
    if (outcome != config::Changed::kSaved) {
        printError(QStringLiteral("could not write config - your token (save it!): %1").arg(token),
                   Kept::kAlways);
        return std::nullopt;
    }
    if (!behind.isEmpty()) {
        printNote(QStringLiteral("still with the former token, as made by hand: %1 (for a new one "
                                 "in all of them: quorvelle server set-token %2 <token>)")
                      .arg(behind.join(QStringLiteral(", ")), server));
    }
    return entry;
}

Lines sessionText(const QString& opening, const QString& server, const QJsonObject& answer) {
    QStringList groups;
    for (const QJsonValue& group : answer.value(u"groups").toArray()) {
        groups.append(group.toString());
    }
    return lines(
        QStringLiteral("%1 %2 as '%3' (%4)\nGroups: %5"),
        {opening, server, answer.value(u"user").toString(), answer.value(u"role").toString(),
         groups.isEmpty() ? QStringLiteral("(none)") : groups.join(QStringLiteral(", "))});
}

}  // namespace quorvelle
