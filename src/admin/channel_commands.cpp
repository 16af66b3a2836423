#include "admin/commands.h"

#include "admin/list_command.h"
#include "admin/reply_text.h"
#include "console/exit_code.h"
#include "console/question.h"
#include "console/usage.h"
#include "server/on_server.h"

namespace quorvelle {

namespace {

QString channelLine(const QJsonObject& channel) {
    const QString name = QStringLiteral("  ") + channel.value(u"channel").toString();
    const QString build = channel.value(u"build").toString();
    if (build.isEmpty()) {
        return name + QStringLiteral(" (no build yet)");
    }
    const QString sizes = channel.contains(u"file_count")
                              ? QStringLiteral("  (%1 files, %2 bytes)")
                                    .arg(wholeNumber(channel.value(u"file_count")),
                                         wholeNumber(channel.value(u"total_size")))
                              : QString();
    return name + QStringLiteral(" -> build ") + build + sizes + QStringLiteral("  promoted ") +
           channel.value(u"promoted_at").toString();
}

}  // namespace

int channelsCommand(QStringList args) {
    return runListCommand(std::move(args), {.name = QStringLiteral("channels"),
                                            .path = QStringLiteral("/api/channels"),
                                            .heading = QStringLiteral("Channels on %1:"),
                                            .none = QStringLiteral("No channels on %1"),
                                            .line = channelLine});
}

int channelCreateCommand(QStringList args) {
    return onServer(std::move(args), 1, [](const Server& server, QStringList& rest) {
        const QString& name = rest.first();
        const Reply reply = postEmpty(server, apiPath(QStringLiteral("/api/channels/%1"), name),
                                      QStringLiteral("channel create"));
        return finish(reply, QStringLiteral("Created channel '%1' on %2\n").arg(name, server.url));
    });
}

int channelDeleteCommand(QStringList args) {
    return onServer(std::move(args), 1, [](const Server& server, QStringList& rest) {
        const QString& name = rest.first();
        if (!confirmed(QStringLiteral("Delete channel '%1' on %2? Its builds are kept.")
                           .arg(name, withoutPasswords(server.url)))) {
            return kExitUsage;
        }
        const Reply reply =
            deleteResource(server, apiPath(QStringLiteral("/api/channels/%1"), name),
                           QStringLiteral("channel delete"));
        return finish(reply,
                      QStringLiteral("Channel '%1' deleted (unassigned from %2 group(s); builds "
                                     "retained)\n")
                          .arg(name, wholeNumber(reply.object.value(u"unassigned_from_groups"))));
    });
}

int channelPublicCommand(QStringList args) {
    return onServer(std::move(args), 2, [](const Server& server, QStringList& rest) {
        const QString& name = rest.first();
        const QString& value = rest.last();
        const bool isPublic = value == QStringLiteral("true");
        if (!isPublic && value != QStringLiteral("false")) {
            return printUsage();
        }
        const Reply reply =
            postEmpty(server, apiPath(QStringLiteral("/api/channels/%1/public"), name),
                      QStringLiteral("channel public"), {{QStringLiteral("value"), value}});
        return finish(reply, QStringLiteral("Channel '%1' is now %2\n")
                                 .arg(name, isPublic ? QStringLiteral("public (anonymous read)")
                                                     : QStringLiteral("private")));
    });
}

}  // namespace quorvelle
