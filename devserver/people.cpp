#include "people.h"

#include <QJsonArray>
#include <QRandomGenerator>

namespace quorvelle::devserver {

std::optional<Caller> People::callerOf(const QString& token) const {
    const PeopleTables tables = read();
    const QString name = entryOf(tables, u"tokens", token)[u"user"].toString();
    const QJsonObject user = entryOf(tables, u"users", name);
    if (user.isEmpty() || user[u"disabled"].toBool()) {
        return std::nullopt;
    }
    return Caller{name, user[u"role"] == QStringLiteral("admin")};
}

QJsonObject entryOf(const PeopleTables& tables, QStringView table, QStringView key) {
    return tables[table][key].toObject();
}

void setEntry(PeopleTables& tables, QStringView table, const QString& key,
              const QJsonObject& entry) {
    QJsonObject entries = tables[table].toObject();
    if (entry.isEmpty()) {
        entries.remove(key);
    } else {
        entries[key] = entry;
    }
    tables[table] = entries;
}

bool isRole(const QString& role) {
    return QStringList{QStringLiteral("admin"), QStringLiteral("member"),
                       QStringLiteral("publisher")}
        .contains(role);
}

Refusal noRole(const QString& role) {
    return {400, QStringLiteral("no role '%1'").arg(role)};
}

QJsonObject newUser(const QString& role, bool isService) {
    return {{QStringLiteral("role"), role},
            {QStringLiteral("service"), isService},
            {QStringLiteral("disabled"), false},
            {QStringLiteral("groups"), QJsonArray()},
            {QStringLiteral("follows"), QJsonArray()},
            {QStringLiteral("channels"), QJsonArray()}};
}

QString newSecret() {
    QRandomGenerator& random = *QRandomGenerator::system();
    return QStringLiteral("%1%2")
        .arg(random.generate64(), 16, 16, QChar('0'))
        .arg(random.generate64(), 16, 16, QChar('0'));
}

QString addToken(PeopleTables& tables, const QString& user, const QString& name) {
    const QString token = newSecret();
    setEntry(tables, u"tokens", token,
             {{QStringLiteral("user"), user}, {QStringLiteral("name"), name}});
    return token;
}

QStringList channelsOf(const PeopleTables& tables, const QString& user) {
    const QJsonObject entry = entryOf(tables, u"users", user);
    QStringList channels = namesIn(entry[u"follows"]);
    for (const QString& group : namesIn(entry[u"groups"])) {
        channels += namesIn(entryOf(tables, u"groups", group)[u"channels"]);
    }
    channels.sort();
    channels.removeDuplicates();
    return channels;
}

int privilegedSeats(const PeopleTables& tables) {
    int seats = 1;
    for (const QJsonValue& user : tables[u"users"].toObject()) {
        const bool isPrivileged = user[u"role"] != QStringLiteral("member");
        const bool counts = !user[u"disabled"].toBool() && !user[u"service"].toBool();
        seats += isPrivileged && counts ? 1 : 0;
    }
    return seats;
}

Reply openSession(PeopleTables& tables, const QString& user, const QStringList& groups,
                  const QString& machine) {
    QJsonObject entry = entryOf(tables, u"users", user);
    if (entry.isEmpty()) {
        entry = newUser(QStringLiteral("member"), false);
    }
    if (entry[u"disabled"].toBool()) {
        return Refusal{403, QStringLiteral("user '%1' is disabled").arg(user)};
    }
    for (const QString& group : groups) {
        entry[u"groups"] = withName(entry[u"groups"], group, true);
    }
    setEntry(tables, u"users", user, entry);
    return QJsonObject{
        {QStringLiteral("token"), addToken(tables, user, machine)},
        {QStringLiteral("user"), user},
        {QStringLiteral("role"), entry[u"role"]},
        {QStringLiteral("groups"), entry[u"groups"]},
        {QStringLiteral("channels"), QJsonArray::fromStringList(channelsOf(tables, user))}};
}

QStringList namesIn(const QJsonValue& list) {
    return list.toVariant().toStringList();
}

QJsonArray withName(const QJsonValue& list, const QString& name, bool present) {
    QStringList names = namesIn(list);
    names.removeAll(name);
    if (present) {
        names.append(name);
    }
    return QJsonArray::fromStringList(names);
}

int withdraw(PeopleTables& tables, QStringView table, QStringView list, const QString& name) {
    int count = 0;
    for (const QString& key : tables[table].toObject().keys()) {
        QJsonObject entry = entryOf(tables, table, key);
        if (namesIn(entry[list]).contains(name)) {
            entry[list] = withName(entry[list], name, false);
            setEntry(tables, table, key, entry);
            ++count;
        }
    }
    return count;
}

}  // namespace quorvelle::devserver
