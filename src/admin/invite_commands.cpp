#include "admin/commands.h"

#include "admin/invite.h"
#include "admin/list_command.h"
#include "admin/reply_text.h"
#include "admin/shown_once.h"
#include "server/on_server.h"

namespace quorvelle {

namespace {

QString inviteLine(const QJsonObject& invite) {
    const QString id = idText(invite.value(u"id"));
    return QStringLiteral("  %1  %2  groups: [%3]  expires %4")
               .arg(id.isEmpty() ? idText(invite.value(kInviteCode)) : id,
                    invite.value(u"user").toString(), joinedNames(invite.value(u"groups")),
                    invite.value(u"expires_at").toString()) +
           (invite.value(u"expired").toBool() ? QStringLiteral("  (EXPIRED)") : QString());
}

Lines invitedText(const QString& server, const QString& user, const QJsonObject& invite) {
    const QString code = invite.value(kInviteCode).toString();
    return lines(
        QStringLiteral("Invite for '%1' (expires %2). The code is shown only once:\n\n  %3\n\n"
                       "They join with:\n  %4"),
        {user, invite.value(u"expires_at").toString(), code, joinCommandLine(server, code)});
}

}  // namespace

int inviteCreateCommand(QStringList args) {
    return runInviteCommand(
        std::move(args), [](const Server& server, const QString& user, QueryItems terms) {
            terms.prepend({QStringLiteral("user"), user});
            const Reply reply = postEmpty(server, QStringLiteral("/api/invites"),
                                          QStringLiteral("invite create"), terms);
            return finishShownOnce(reply, kInviteCode, invitedText(server.url, user, reply.object));
        });
}

int inviteRevokeCommand(QStringList args) {
    return onServer(std::move(args), 1, [](const Server& server, QStringList& rest) {
        const QString& id = rest.first();
        const Reply reply = deleteResource(server, apiPath(QStringLiteral("/api/invites/%1"), id),
                                           QStringLiteral("invite revoke"));
        return finish(reply, QStringLiteral("Invite '%1' revoked\n").arg(id));
    });
}

int invitesCommand(QStringList args) {
    return runListCommand(std::move(args), {.name = QStringLiteral("invites"),
                                            .path = QStringLiteral("/api/invites"),
                                            .heading = QStringLiteral("Outstanding invites on %1:"),
                                            .none = QStringLiteral("No outstanding invites on %1"),
                                            .line = inviteLine});
}

}  // namespace quorvelle
