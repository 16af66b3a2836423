#include "admin/list_command.h"

#include <QJsonArray>

#include "server/on_server.h"

namespace quorvelle {

int runListCommand(QStringList args, const ListCommand& command) {
    return listOnServer(std::move(args), [&](const Server& server, QStringList&) {
        const Reply reply = getJson(server, command.path, command.name);
        const QJsonArray things = reply.object.value(command.name).toArray();
        QString text = (things.isEmpty() ? command.none : command.heading).arg(server.url) + u'\n';
        for (const QJsonValue& thing : things) {
            text += command.line(thing.toObject()) + u'\n';
        }
        return finish(reply, text);
    });
}

}  // namespace quorvelle
