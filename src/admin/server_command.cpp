#include "admin/server_command.h"

#include <QJsonArray>
#include <QJsonValue>

#include "console/arguments.h"
#include "console/exit_code.h"
#include "console/output.h"
#include "console/usage.h"
#include "server/server_option.h"

namespace quorvelle {

int onServer(QStringList args, const ServerWork& work) {
    const QString server = resolveServer(args);
    return server.isEmpty() ? kExitUsage : work(server, args);
}

int onServer(QStringList args, qsizetype positionals, const ServerWork& work) {
    return onServer(std::move(args), [&](const QString& server, QStringList& rest) {
        return rest.size() == positionals ? work(server, rest) : printUsage();
    });
}

std::optional<QString> takeGiven(QStringList& args, const QString& name) {
    const qsizetype before = args.size();
    const QString value = takeOption(args, name);
    return args.size() == before ? std::nullopt : std::optional(value);
}

void addGiven(QueryItems& query, const QString& key, const std::optional<QString>& value) {
    if (value) {
        query.append({key, *value});
    }
}

int finish(const Reply& reply, const QString& text) {
    if (!reply.ok) {
        return kExitFailed;
    }
    printResult(reply.object, text);
    return kExitSuccess;
}

QString joinedNames(const QJsonValue& names) {
    QStringList texts;
    for (const QJsonValue& name : names.toArray()) {
        texts.append(name.toString());
    }
    return texts.join(QStringLiteral(", "));
}

QString namesOrNone(const QJsonValue& names) {
    const QString text = joinedNames(names);
    return text.isEmpty() ? QStringLiteral("(none)") : text;
}

QString wholeNumber(const QJsonValue& value) {
    return QString::number(value.toInteger());
}

QString idText(const QJsonValue& value) {
    return value.isDouble() ? wholeNumber(value) : value.toString();
}

QString listing(const QString& none, const QString& heading, const QJsonValue& objects,
                const std::function<QString(const QJsonObject&)>& line) {
    const QJsonArray array = objects.toArray();
    QString text = (array.isEmpty() ? none : heading) + u'\n';
    for (const QJsonValue& object : array) {
        text += line(object.toObject()) + u'\n';
    }
    return text;
}

}  // namespace quorvelle
