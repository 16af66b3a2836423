#include "admin/commands.h"

#include "admin/list_command.h"
#include "admin/membership.h"
#include "admin/reply_text.h"
#include "console/exit_code.h"
#include "console/question.h"
#include "server/on_server.h"

namespace quorvelle {

namespace {

QString groupLine(const QJsonObject& group) {
    return QStringLiteral("  %1  channels: [%2]  members: [%3]")
               .arg(group.value(u"name").toString(), joinedNames(group.value(u"channels")),
                    joinedNames(group.value(u"members"))) +
           (group.value(u"sso_managed").toBool() ? QStringLiteral("  (managed by SSO)")
                                                 : QString());
}

MembershipChange ofChannel(const QString& label, const QString& text) {
    return {QStringLiteral("/api/groups/%1/channels"), QStringLiteral("channel"), label, text};
}

}  // namespace

int groupsCommand(QStringList args) {
    return runListCommand(std::move(args), {.name = QStringLiteral("groups"),
                                            .path = QStringLiteral("/api/groups"),
                                            .heading = QStringLiteral("Groups on %1:"),
                                            .none = QStringLiteral("No groups on %1"),
                                            .line = groupLine});
}

int groupCreateCommand(QStringList args) {
    return onServer(std::move(args), 1, [](const Server& server, QStringList& rest) {
        const QString& name = rest.first();
        const Reply reply = postEmpty(server, apiPath(QStringLiteral("/api/groups/%1"), name),
                                      QStringLiteral("group create"));
        return finish(reply, QStringLiteral("Group '%1' created on %2\n").arg(name, server.url));
    });
}

int groupDeleteCommand(QStringList args) {
    return onServer(std::move(args), 1, [](const Server& server, QStringList& rest) {
        const QString& name = rest.first();
        if (!confirmed(QStringLiteral("Delete group '%1' on %2? Its members are kept.")
                           .arg(name, withoutPasswords(server.url)))) {
            return kExitUsage;
        }
        const Reply reply = deleteResource(server, apiPath(QStringLiteral("/api/groups/%1"), name),
                                           QStringLiteral("group delete"));
        return finish(reply,
                      QStringLiteral("Group '%1' deleted (removed from %2 user(s))\n")
                          .arg(name, wholeNumber(reply.object.value(u"removed_from_users"))));
    });
}

int groupAssignChannelCommand(QStringList args) {
    return addMember(std::move(args),
                     ofChannel(QStringLiteral("assign-channel"),
                               QStringLiteral("Group '%1' now follows channel '%2'")));
}

int groupUnassignChannelCommand(QStringList args) {
    return removeMember(std::move(args),
                        ofChannel(QStringLiteral("unassign-channel"),
                                  QStringLiteral("Group '%1' no longer follows channel '%2'")));
}

}  // namespace quorvelle
