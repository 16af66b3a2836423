#include "admin/promote_command.h"

#include "admin/promote.h"
#include "console/arguments.h"
#include "console/exit_code.h"
#include "console/output.h"
#include "console/usage.h"
#include "server/server_option.h"

namespace quorvelle {

namespace {

/// The build that a channel points at, or an empty string after the reason was printed.
QString buildOfChannel(const QString& server, const QString& channel) {
    const Reply reply = getJson(server, apiPath(QStringLiteral("/api/channels/%1"), channel),
                                QStringLiteral("reading channel '%1'").arg(channel));
    if (!reply.ok) {
        return {};
    }
    const QString build = reply.object.value(u"build").toString();
    if (build.isEmpty()) {
        printError(QStringLiteral("'%1' has no build to promote").arg(channel));
    }
    return build;
}

}  // namespace

Reply promoteBuild(const QString& server, const QString& channel, const QString& build) {
    return postEmpty(server, apiPath(QStringLiteral("/api/channels/%1/promote"), channel),
                     QStringLiteral("promote"), {{QStringLiteral("build"), build}});
}

QString promotedLine(const QString& channel, const QString& build, const QString& origin) {
    return QStringLiteral("Channel '%1' now at build %2%3\n").arg(channel, build, origin);
}

int promoteCommand(QStringList args) {
    const QString server = resolveServer(args);
    if (server.isEmpty()) {
        return kExitUsage;
    }
    const QString source = takeOption(args, QStringLiteral("--from"));
    if (args.size() != (source.isEmpty() ? 2 : 1)) {
        return printUsage();
    }
    const QString& channel = args.at(0);
    const QString build = source.isEmpty() ? args.at(1) : buildOfChannel(server, source);
    if (build.isEmpty() && !source.isEmpty()) {
        return kExitFailed;
    }
    const Reply reply = promoteBuild(server, channel, build);
    if (!reply.ok) {
        return kExitFailed;
    }
    const QString origin =
        source.isEmpty() ? QString() : QStringLiteral(" (from '") + source + QStringLiteral("')");
    printResult(reply.object, promotedLine(channel, build, origin));
    return kExitSuccess;
}

}  // namespace quorvelle
