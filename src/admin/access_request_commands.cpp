#include "admin/commands.h"

#include "admin/invite.h"
#include "admin/list_command.h"
#include "admin/reply_text.h"
#include "admin/shown_once.h"
#include "config/server_url.h"
#include "console/arguments.h"
#include "console/output.h"
#include "console/usage.h"
#include "server/addresses.h"
#include "server/next_step.h"
#include "server/on_server.h"

namespace quorvelle {

namespace {

Lines requestLines(const QJsonObject& request) {
    QString line =
        QStringLiteral("  %1  %2  %3  %4")
            .arg(idText(request.value(u"id")), request.value(u"name").toString(),
                 request.value(u"email").toString(), request.value(u"created_at").toString());
    if (request.value(u"user_exists").toBool()) {
        line += QStringLiteral("  (user exists)");
    }
    // Indented in all its lines, a stranger's message cannot pass for a further request.
    const QString message = request.value(u"message").toString();
    Lines text{line};
    for (const QString& part : message.isEmpty() ? Lines() : message.split(u'\n')) {
        text << QStringLiteral("      ") + part;
    }
    return text;
}

Lines mailText(const QString& server, const QJsonObject& invite) {
    const QString code = invite.value(kInviteCode).toString();
    return lines(
        QStringLiteral("You have access to the Quorvelle server %1\n\n"
                       "Install the client from %2, start it, choose \"Join with invite\",\n"
                       "and paste:\n\n  %1\n  %3\n\n"
                       "or in a terminal:  %4\n\n"
                       "The invite expires %5"),
        {withoutUserInformation(server), kDownloads, code, joinCommandLine(server, code),
         invite.value(u"expires_at").toString()});
}

QString refusalText(const QString& server, const Answer& answer) {
    if (answer.status == 0) {
        return QStringLiteral("could not reach %1").arg(server);
    }
    const QString reason = answer.object.value(u"error").toString();
    return reason.isEmpty() ? QStringLiteral("request failed (HTTP %1)").arg(answer.status)
                            : reason;
}

}  // namespace

int requestAccessCommand(QStringList args) {
    const QString name = takeOption(args, QStringLiteral("--name"));
    const QString email = takeOption(args, QStringLiteral("--email"));
    const QString message = takeOption(args, QStringLiteral("--message"));
    // Whoever asks for access has no token yet.
    const Server server{.url = withoutTrailingSlashes(args.value(0))};
    if (args.size() != 1 || server.url.isEmpty() || name.isEmpty() || email.isEmpty()) {
        return printUsage();
    }
    const Answer answer = askJson(server, QStringLiteral("/api/access-requests"),
                                  {{QStringLiteral("name"), name},
                                   {QStringLiteral("email"), email},
                                   {QStringLiteral("message"), message}});
    if (!answer.ok) {
        printError(refusalText(server.url, answer));
        printNote(nextStep(server.url, answer.status));
    }
    return finish({answer.object, answer.ok},
                  QStringLiteral("Request sent to %1. An admin will send your invite to %2\n")
                      .arg(server.url, email));
}

int requestsCommand(QStringList args) {
    return runListCommand(std::move(args),
                          {.name = QStringLiteral("requests"),
                           .path = QStringLiteral("/api/access-requests"),
                           .heading = QStringLiteral("Pending access requests on %1:"),
                           .none = QStringLiteral("No pending access requests on %1"),
                           .lines = requestLines});
}

int requestApproveCommand(QStringList args) {
    return runInviteCommand(
        std::move(args), [](const Server& server, const QString& id, const QueryItems& terms) {
            const Reply reply =
                postEmpty(server, apiPath(QStringLiteral("/api/access-requests/%1/approve"), id),
                          QStringLiteral("request approve"), terms);
            return finishShownOnce(
                reply, kInviteCode,
                lines(QStringLiteral("Approved. Send this to %1 (the code is shown only once):\n"),
                      {reply.object.value(u"email").toString()}) +
                    mailText(server.url, reply.object));
        });
}

int requestDeclineCommand(QStringList args) {
    return onServer(std::move(args), 1, [](const Server& server, QStringList& rest) {
        const QString& id = rest.first();
        const Reply reply =
            deleteResource(server, apiPath(QStringLiteral("/api/access-requests/%1"), id),
                           QStringLiteral("request decline"));
        return finish(reply, QStringLiteral("Declined %1\n").arg(id));
    });
}

}  // namespace quorvelle
