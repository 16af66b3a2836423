#include "admin/commands.h"

#include "admin/list_command.h"
#include "admin/membership.h"
#include "admin/reply_text.h"
#include "admin/roles.h"
#include "console/arguments.h"
#include "console/exit_code.h"
#include "console/question.h"
#include "console/usage.h"
#include "server/on_server.h"

namespace quorvelle {

namespace {

QString userLine(const QJsonObject& user) {
    const QString role = user.value(u"role").toString();
    QString line = QStringLiteral("  %1  %2").arg(user.value(u"name").toString(), role);
    if (user.value(u"service").toBool()) {
        line += QStringLiteral("  [service]");
    }
    if (user.value(u"disabled").toBool()) {
        line += QStringLiteral("  [DISABLED]");
    }
    line += QStringLiteral("  groups: ") + namesOrNone(user.value(u"groups")) +
            QStringLiteral("  follows: ") + namesOrNone(user.value(u"follows"));
    if (role == kPublisher) {
        line += QStringLiteral("  publishes to: ") + namesOrNone(user.value(u"channels"));
    }
    return line;
}

Lines createdText(const QString& server, const QString& name, const QString& role, bool isService) {
    if (!isService) {
        return {QStringLiteral("User '%1' created (role %2) on %3").arg(name, role, server)};
    }
    return lines(
        QStringLiteral("Service account '%1' created on %2 (publisher, not a seat). Give your CI a "
                       "token:\n  quorvelle token create <name> --user %1"),
        {name, server});
}

int setUserDisabled(QStringList args, bool disabled) {
    return onServer(std::move(args), 1, [disabled](const Server& server, QStringList& rest) {
        const QString& user = rest.first();
        const Reply reply =
            postEmpty(server, apiPath(QStringLiteral("/api/users/%1/disabled"), user),
                      disabled ? QStringLiteral("disable") : QStringLiteral("enable"),
                      {{QStringLiteral("value"),
                        disabled ? QStringLiteral("true") : QStringLiteral("false")}});
        return finish(reply,
                      QStringLiteral("User '%1' %2\n")
                          .arg(user, disabled ? QStringLiteral("disabled (all tokens invalidated)")
                                              : QStringLiteral("enabled")));
    });
}

MembershipChange ofGroup(const QString& label, const QString& text) {
    return {QStringLiteral("/api/users/%1/groups"), QStringLiteral("group"), label, text};
}

MembershipChange ofFollowed(const QString& label, const QString& text) {
    return {QStringLiteral("/api/users/%1/channels"), QStringLiteral("channel"), label, text};
}

}  // namespace

int usersCommand(QStringList args) {
    return runListCommand(std::move(args), {.name = QStringLiteral("users"),
                                            .path = QStringLiteral("/api/users"),
                                            .heading = QStringLiteral("Users on %1:"),
                                            .none = QStringLiteral("Users on %1:"),
                                            .line = userLine});
}

int userCreateCommand(QStringList args) {
    return onServer(std::move(args), [](const Server& server, QStringList& rest) {
        const bool isService = takeFlag(rest, QStringLiteral("--service"));
        const QString role =
            takeGiven(rest, QStringLiteral("--role")).value_or(isService ? kPublisher : kMember);
        if (!areNames(rest, 1) || !isRole(role)) {
            return printUsage();
        }
        const QString& name = rest.first();
        QueryItems query = {{QStringLiteral("role"), role}};
        if (isService) {
            query.append({QStringLiteral("service"), QStringLiteral("true")});
        }
        const Reply reply = postEmpty(server, apiPath(QStringLiteral("/api/users/%1"), name),
                                      QStringLiteral("user create"), query);
        return finish(reply, createdText(server.url, name, role, isService));
    });
}

int userDeleteCommand(QStringList args) {
    return onServer(std::move(args), 1, [](const Server& server, QStringList& rest) {
        const QString& user = rest.first();
        if (!confirmed(QStringLiteral("Delete user '%1' on %2? All tokens end with it.")
                           .arg(user, withoutPasswords(server.url)))) {
            return kExitUsage;
        }
        const Reply reply = deleteResource(server, apiPath(QStringLiteral("/api/users/%1"), user),
                                           QStringLiteral("user delete"));
        return finish(reply, QStringLiteral("User '%1' deleted (%2 token(s) removed)\n")
                                 .arg(user, wholeNumber(reply.object.value(u"tokens_removed"))));
    });
}

int userJoinGroupCommand(QStringList args) {
    return addMember(std::move(args), ofGroup(QStringLiteral("join-group"),
                                              QStringLiteral("User '%1' joined group '%2'")));
}

int userLeaveGroupCommand(QStringList args) {
    return removeMember(std::move(args), ofGroup(QStringLiteral("leave-group"),
                                                 QStringLiteral("User '%1' left group '%2'")));
}

int userFollowCommand(QStringList args) {
    return addMember(std::move(args), ofFollowed(QStringLiteral("follow"),
                                                 QStringLiteral("User '%1' now follows '%2'")));
}

int userUnfollowCommand(QStringList args) {
    return removeMember(
        std::move(args),
        ofFollowed(QStringLiteral("unfollow"), QStringLiteral("User '%1' no longer follows '%2'")));
}

int userDisableCommand(QStringList args) {
    return setUserDisabled(std::move(args), true);
}

int userEnableCommand(QStringList args) {
    return setUserDisabled(std::move(args), false);
}

int userSetRoleCommand(QStringList args) {
    return onServer(std::move(args), [](const Server& server, QStringList& rest) {
        const auto channels = takeGiven(rest, QStringLiteral("--channels"));
        if (!areNames(rest, 2) || !isRole(rest.last())) {
            return printUsage();
        }
        const QString& name = rest.first();
        const QString& role = rest.last();
        QueryItems query = {{QStringLiteral("value"), role}};
        addGiven(query, QStringLiteral("channels"), channels);
        const Reply reply = postEmpty(server, apiPath(QStringLiteral("/api/users/%1/role"), name),
                                      QStringLiteral("user set-role"), query);
        return finish(reply, QStringLiteral("User '%1' is now %2\n").arg(name, role));
    });
}

}  // namespace quorvelle
