#include "admin/commands.h"

#include <QJsonArray>

#include "admin/list_command.h"
#include "admin/reply_text.h"
#include "console/exit_code.h"
#include "console/question.h"
#include "server/on_server.h"

namespace quorvelle {

namespace {

QString disabledMark(const QJsonObject& build) {
    return build.value(u"disabled").toBool() ? QStringLiteral("  [DISABLED]") : QString();
}

QString buildLine(const QJsonObject& build) {
    const QString channels = joinedNames(build.value(u"channels"));
    return QStringLiteral("  %1  %2  %3 files  %4 bytes")
               .arg(build.value(u"build").toString(), build.value(u"created_at").toString(),
                    wholeNumber(build.value(u"file_count")),
                    wholeNumber(build.value(u"total_size"))) +
           disabledMark(build) +
           (channels.isEmpty() ? QString() : QStringLiteral("  <- ") + channels);
}

Lines buildText(const QString& id, const QJsonObject& build) {
    Lines text =
        lines(QStringLiteral("Build %1%2  created %3  %4 files, %5 bytes\non channels: %6\nfiles:"),
              {id, disabledMark(build), build.value(u"created_at").toString(),
               wholeNumber(build.value(u"file_count")), wholeNumber(build.value(u"total_size")),
               namesOrNone(build.value(u"channels"))});
    for (const QJsonValue& value : build.value(u"files").toArray()) {
        const QJsonObject file = value.toObject();
        text << QStringLiteral("  %1  (%2 bytes)")
                    .arg(file.value(u"path").toString(), wholeNumber(file.value(u"size")));
    }
    return text;
}

int setBuildDisabled(QStringList args, bool disabled) {
    return onServer(std::move(args), 1, [disabled](const Server& server, QStringList& rest) {
        const QString& id = rest.first();
        const Reply reply =
            postEmpty(server, apiPath(QStringLiteral("/api/builds/%1/disabled"), id),
                      disabled ? QStringLiteral("build disable") : QStringLiteral("build enable"),
                      {{QStringLiteral("value"),
                        disabled ? QStringLiteral("true") : QStringLiteral("false")}});
        return finish(reply, QStringLiteral("Build '") + id +
                                 (disabled ? QStringLiteral("' disabled (cannot be promoted)\n")
                                           : QStringLiteral("' enabled\n")));
    });
}

}  // namespace

int buildsCommand(QStringList args) {
    return runListCommand(std::move(args), {.name = QStringLiteral("builds"),
                                            .path = QStringLiteral("/api/builds"),
                                            .heading = QStringLiteral("Builds on %1:"),
                                            .none = QStringLiteral("No builds on %1"),
                                            .line = buildLine});
}

int buildCommand(QStringList args) {
    return onServer(std::move(args), 1, [](const Server& server, QStringList& rest) {
        const QString& id = rest.first();
        const Reply reply =
            getJson(server, apiPath(QStringLiteral("/api/builds/%1"), id), QStringLiteral("build"));
        return finish(reply, buildText(id, reply.object));
    });
}

int buildDeleteCommand(QStringList args) {
    return onServer(std::move(args), 1, [](const Server& server, QStringList& rest) {
        const QString& id = rest.first();
        if (!confirmed(QStringLiteral("Delete build '%1' on %2? It cannot be undone.")
                           .arg(id, withoutPasswords(server.url)))) {
            return kExitUsage;
        }
        const Reply reply = deleteResource(server, apiPath(QStringLiteral("/api/builds/%1"), id),
                                           QStringLiteral("build delete"));
        return finish(reply, QStringLiteral("Build '") + id + QStringLiteral("' deleted\n"));
    });
}

int buildDisableCommand(QStringList args) {
    return setBuildDisabled(std::move(args), true);
}

int buildEnableCommand(QStringList args) {
    return setBuildDisabled(std::move(args), false);
}

}  // namespace quorvelle
