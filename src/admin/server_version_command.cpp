#include "admin/commands.h"

#include "admin/reply_text.h"
#include "server/on_server.h"

namespace quorvelle {

int serverVersionCommand(QStringList args) {
    return listOnServer(std::move(args), [](const Server& server, QStringList&) {
        const Reply reply =
            getJson(server, QStringLiteral("/api/version"), QStringLiteral("server-version"));
        return finish(reply,
                      QStringLiteral("%1 %2 (schema v%3) at %4\n")
                          .arg(reply.object.value(u"name").toString(),
                               reply.object.value(u"version").toString(),
                               wholeNumber(reply.object.value(u"schema_version")), server.url));
    });
}

}  // namespace quorvelle
