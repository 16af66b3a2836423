#include "people.h"

#include <QFileInfo>
#include <QJsonArray>
#include <QRandomGenerator>

#include "data_folder.h"

namespace quorvelle::devserver {

std::optional<QString> People::load() {
    if (!QFileInfo::exists(path_)) {
        return std::nullopt;
    }
    const auto stored = readJson(path_);
    if (!stored) {
        return QString("cannot read the people in '%1'").arg(path_);
    }
    tables_ = *stored;
    return std::nullopt;
}

std::optional<Caller> People::callerOf(const QString& token) const {
    const std::lock_guard lock(mutex_);
    const QString name = entryOf(tables_, "tokens", token)["user"].toString();
    const QJsonObject user = entryOf(tables_, "users", name);
    if (user.isEmpty() || user["disabled"].toBool()) {
        return std::nullopt;
    }
    return Caller{name, user["role"] == "admin"};
}

Reply People::with(const std::function<Reply(PeopleTables& tables)>& work) {
    const std::lock_guard lock(mutex_);
    PeopleTables changed = tables_;
    Reply reply = work(changed);
    if (std::holds_alternative<Refusal>(reply) || changed == tables_) {
        return reply;
    }
    if (!writeJson(path_, changed, Readers::kOwner)) {
        return Refusal{500, "cannot record the change"};
    }
    tables_ = changed;
    return reply;
}

QJsonObject entryOf(const PeopleTables& tables, const QString& table, const QString& key) {
    return tables[table][key].toObject();
}

void setEntry(PeopleTables& tables, const QString& table, const QString& key,
              const QJsonObject& entry) {
    QJsonObject entries = tables[table].toObject();
    if (entry.isEmpty()) {
        entries.remove(key);
    } else {
        entries[key] = entry;
    }
    tables[table] = entries;
}

QJsonObject newUser(const QString& role, bool isService) {
    return {{"role", role},           {"service", isService},    {"disabled", false},
            {"groups", QJsonArray()}, {"follows", QJsonArray()}, {"channels", QJsonArray()}};
}

QString newSecret() {
    QRandomGenerator& random = *QRandomGenerator::system();
    return QString("%1%2")
        .arg(random.generate64(), 16, 16, QChar('0'))
        .arg(random.generate64(), 16, 16, QChar('0'));
}

QString addToken(PeopleTables& tables, const QString& user, const QString& name) {
    const QString token = newSecret();
    setEntry(tables, "tokens", token, {{"user", user}, {"name", name}});
    return token;
}

QStringList channelsOf(const PeopleTables& tables, const QString& user) {
    const QJsonObject entry = entryOf(tables, "users", user);
    QStringList channels = namesIn(entry["follows"]);
    for (const QString& group : namesIn(entry["groups"])) {
        channels += namesIn(entryOf(tables, "groups", group)["channels"]);
    }
    channels.sort();
    channels.removeDuplicates();
    return channels;
}

Reply openSession(PeopleTables& tables, const QString& user, const QStringList& groups,
                  const QString& machine) {
    QJsonObject entry = entryOf(tables, "users", user);
    if (entry.isEmpty()) {
        entry = newUser("member", false);
    }
    if (entry["disabled"].toBool()) {
        return Refusal{403, QString("user '%1' is disabled").arg(user)};
    }
    for (const QString& group : groups) {
        entry["groups"] = withName(entry["groups"], group, true);
    }
    setEntry(tables, "users", user, entry);
    return QJsonObject{{"token", addToken(tables, user, machine)},
                       {"user", user},
                       {"role", entry["role"]},
                       {"groups", entry["groups"]},
                       {"channels", QJsonArray::fromStringList(channelsOf(tables, user))}};
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

}  // namespace quorvelle::devserver
