#include "admin/list_command.h"

#include <QJsonArray>

#include "server/on_server.h"

namespace quorvelle {

int runListCommand(QStringList args, const ListCommand& command) {
    return listOnServer(std::move(args), [&](const Server& server, QStringList&) {
        const Reply reply = getJson(server, command.path, command.name);
        const QJsonArray things = reply.object.value(command.name).toArray();
        Lines text{(things.isEmpty() ? command.none : command.heading).arg(server.url)};
        for (const QJsonValue& value : things) {
            const QJsonObject thing = value.toObject();
            text += command.lines != nullptr ? command.lines(thing) : Lines{command.line(thing)};
        }
        return finish(reply, text);
    });
}

}  // namespace quorvelle
