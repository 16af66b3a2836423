#include "admin/commands.h"

#include "admin/reply_text.h"
#include "server/on_server.h"

namespace quorvelle {

int whoamiCommand(QStringList args) {
    return listOnServer(std::move(args), [](const Server& server, QStringList&) {
        const Reply reply = getJson(server, QStringLiteral("/api/me"), QStringLiteral("whoami"));
        return finish(
            reply, lines(QStringLiteral("%1: you are '%2' (%3)\nGroups: %4\nAssigned channels: %5"),
                         {server.url, reply.object.value(u"name").toString(),
                          reply.object.value(u"role").toString(),
                          namesOrNone(reply.object.value(u"groups")),
                          namesOrNone(reply.object.value(u"channels"))}));
    });
}

}  // namespace quorvelle
