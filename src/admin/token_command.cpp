#include "admin/commands.h"

#include "admin/shown_once.h"
#include "console/arguments.h"
#include "console/usage.h"
#include "server/on_server.h"

namespace quorvelle {

int tokenCreateCommand(QStringList args) {
    return onServer(std::move(args), [](const Server& server, QStringList& rest) {
        const QString user = takeOption(rest, QStringLiteral("--user"));
        if (!areNames(rest, 1) || user.isEmpty()) {
            return printUsage();
        }
        const QString& name = rest.first();
        const Reply reply =
            postEmpty(server, apiPath(QStringLiteral("/api/users/%1/tokens"), user),
                      QStringLiteral("token create"), {{QStringLiteral("name"), name}});
        return finishShownOnce(
            reply, QStringLiteral("token"),
            lines(QStringLiteral("Token '%1' created for service account '%2'. Save it now - "
                                 "it is shown only once:\n\n  %3"),
                  {name, user, reply.object.value(u"token").toString()}));
    });
}

}  // namespace quorvelle
