#include "publish/commands.h"

#include "console/arguments.h"
#include "console/exit_code.h"
#include "console/output.h"
#include "console/usage.h"
#include "publish/promote.h"
#include "server/on_server.h"

namespace quorvelle {

namespace {

/// The build that a channel points at, or an empty string after the reason was printed.
QString buildOfChannel(const Server& server, const QString& channel) {
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

Reply promoteBuild(const Server& server, const QString& channel, const QString& build) {
    return postEmpty(server, apiPath(QStringLiteral("/api/channels/%1/promote"), channel),
                     QStringLiteral("promote"), {{QStringLiteral("build"), build}});
}

QString promotedLine(const QString& channel, const QString& build, const QString& origin) {
    return QStringLiteral("Channel '%1' now at build %2%3\n").arg(channel, build, origin);
}

int promoteCommand(QStringList args) {
    return onServer(std::move(args), [](const Server& server, QStringList& rest) {
        const auto source = takeGiven(rest, QStringLiteral("--from"));
        if (isEmptyName(source) || !areNames(rest, source ? 1 : 2)) {
            return printUsage();
        }
        const QString& channel = rest.at(0);
        const QString build = source ? buildOfChannel(server, *source) : rest.at(1);
        if (build.isEmpty()) {
            return kExitFailed;
        }
        const QString origin =
            source ? QStringLiteral(" (from '") + *source + QStringLiteral("')") : QString();
        return finish(promoteBuild(server, channel, build), promotedLine(channel, build, origin));
    });
}

}  // namespace quorvelle
