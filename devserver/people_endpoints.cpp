#include "people_endpoints.h"

#include <QDateTime>
#include <QJsonArray>
#include <initializer_list>

#include "data_folder.h"

namespace quorvelle::devserver {
namespace {

constexpr int kDefaultInviteDays = 7;
constexpr int kMostInviteDays = 3650;

Refusal unknown(const QString& what, const QString& name) {
    return {404, QString("no %1 '%2'").arg(what, name)};
}

/// Changes one entry of a table that must exist.
template <class Work>
Reply change(PeopleTables& t, const QString& table, const QString& name, Work work) {
    QJsonObject entry = entryOf(t, table, name);
    if (entry.isEmpty()) {
        return unknown(table.chopped(1), name);
    }
    work(entry);
    setEntry(t, table, name, entry);
    return entry;
}

/// Adds a name to one of an entry's lists, or takes it out.
Reply list(PeopleTables& t, const char* table, const QString& name, const char* key,
           const QString& value, bool present) {
    if (value.isEmpty()) {
        return Refusal{400, "the query lacks the name"};
    }
    return change(t, table, name,
                  [&](QJsonObject& entry) { entry[key] = withName(entry[key], value, present); });
}

/// The entries of a table with their keys as `key`.
QJsonArray listed(const PeopleTables& t, const QString& table, const char* key) {
    QJsonArray entries;
    const QJsonObject all = t[table].toObject();
    for (auto it = all.begin(); it != all.end(); ++it) {
        QJsonObject entry = it->toObject();
        entry[key] = it.key();
        entries.append(entry);
    }
    return entries;
}

Reply showCaller(const PeopleTables& t, const Call& call) {
    const QString& name = call.caller.name;
    const QJsonObject user = entryOf(t, "users", name);
    return QJsonObject{{"user", name},
                       {"name", name},
                       {"role", user["role"].toString("admin")},
                       {"groups", user["groups"].toArray()},
                       {"channels", QJsonArray::fromStringList(channelsOf(t, name))}};
}

bool isRole(const QString& role) {
    return QStringList{"admin", "member", "publisher"}.contains(role);
}

Reply createUser(PeopleTables& t, const Call& call) {
    const QString role = call.query.value("role", "member");
    if (!isRole(role)) {
        return Refusal{400, QString("no role '%1'").arg(role)};
    }
    if (call.name == kAdministrator || !entryOf(t, "users", call.name).isEmpty()) {
        return Refusal{409, QString("user '%1' already exists").arg(call.name)};
    }
    const QJsonObject user = newUser(role, call.query.contains("service"));
    setEntry(t, "users", call.name, user);
    return user;
}

int dropTokens(PeopleTables& t, const QString& user) {
    int dropped = 0;
    for (const QJsonValue& token : listed(t, "tokens", "token")) {
        if (token["user"] == user) {
            setEntry(t, "tokens", token["token"].toString(), {});
            ++dropped;
        }
    }
    return dropped;
}

Reply deleteUser(PeopleTables& t, const Call& call) {
    if (entryOf(t, "users", call.name).isEmpty()) {
        return unknown("user", call.name);
    }
    setEntry(t, "users", call.name, {});
    return QJsonObject{{"tokens_removed", dropTokens(t, call.name)}};
}

Reply setDisabled(PeopleTables& t, const Call& call) {
    const bool disabled = call.query.value("value") == "true";
    if (disabled) {
        dropTokens(t, call.name);
    }
    return change(t, "users", call.name, [&](QJsonObject& user) { user["disabled"] = disabled; });
}

Reply setRole(PeopleTables& t, const Call& call) {
    const QString role = call.query.value("value");
    if (!isRole(role)) {
        return Refusal{400, QString("no role '%1'").arg(role)};
    }
    const QStringList channels = call.query.value("channels").split(',', Qt::SkipEmptyParts);
    return change(t, "users", call.name, [&](QJsonObject& user) {
        user["role"] = role;
        user["channels"] = QJsonArray::fromStringList(channels);
    });
}

Reply createToken(PeopleTables& t, const Call& call) {
    if (!entryOf(t, "users", call.name)["service"].toBool()) {
        return unknown("service account", call.name);
    }
    return QJsonObject{{"token", addToken(t, call.name, call.query.value("name"))}};
}

Reply listGroups(const PeopleTables& t, const Call&) {
    QJsonArray groups = listed(t, "groups", "name");
    for (QJsonValueRef reference : groups) {
        QJsonObject group = reference.toObject();
        QJsonArray members;
        for (const QJsonValue& user : listed(t, "users", "name")) {
            if (user["groups"].toArray().contains(group["name"])) {
                members.append(user["name"]);
            }
        }
        group["members"] = members;
        reference = group;
    }
    return QJsonObject{{"groups", groups}};
}

Reply createGroup(PeopleTables& t, const Call& call) {
    if (!entryOf(t, "groups", call.name).isEmpty()) {
        return Refusal{409, QString("group '%1' already exists").arg(call.name)};
    }
    const QJsonObject group{{"channels", QJsonArray()}, {"sso_managed", false}};
    setEntry(t, "groups", call.name, group);
    return group;
}

Reply deleteGroup(PeopleTables& t, const Call& call) {
    if (entryOf(t, "groups", call.name).isEmpty()) {
        return unknown("group", call.name);
    }
    setEntry(t, "groups", call.name, {});
    int removed = 0;
    for (const QJsonValue& user : listed(t, "users", "name")) {
        if (user["groups"].toArray().contains(call.name)) {
            list(t, "users", user["name"].toString(), "groups", call.name, false);
            ++removed;
        }
    }
    return QJsonObject{{"removed_from_users", removed}};
}

Reply joinGroup(PeopleTables& t, const Call& call) {
    const QString group = call.query.value("group");
    return entryOf(t, "groups", group).isEmpty()
               ? unknown("group", group)
               : list(t, "users", call.name, "groups", group, true);
}

Reply addInvite(PeopleTables& t, const QString& user, const Call& call) {
    bool isNumber = false;
    const int days = call.query.value("days", QString::number(kDefaultInviteDays)).toInt(&isNumber);
    if (user.isEmpty() || !isNumber || days < 1 || days > kMostInviteDays) {
        return Refusal{400, "an invite needs a user, and its days are a number from 1 to 3650"};
    }
    const QStringList groups = call.query.value("groups").split(',', Qt::SkipEmptyParts);
    for (const QString& group : groups) {
        if (entryOf(t, "groups", group).isEmpty()) {
            return unknown("group", group);
        }
    }
    const QString code = newSecret();
    const QJsonObject invite{
        {"code", code},
        {"user", user},
        {"groups", QJsonArray::fromStringList(groups)},
        {"expires_at", QDateTime::currentDateTimeUtc().addDays(days).toString(Qt::ISODate)}};
    setEntry(t, "invites", newSecret().first(8), invite);
    return invite;
}

Reply listInvites(const PeopleTables& t, const Call&) {
    QJsonArray invites = listed(t, "invites", "id");
    for (QJsonValueRef reference : invites) {
        QJsonObject invite = reference.toObject();
        invite.remove("code");
        invite["expired"] = invite["expires_at"].toString() < timestamp();
        reference = invite;
    }
    return QJsonObject{{"invites", invites}};
}

Reply redeem(PeopleTables& t, const Call& call) {
    for (const QJsonValue& invite : listed(t, "invites", "id")) {
        if (invite["code"] == call.query.value("code") &&
            invite["expires_at"].toString() >= timestamp()) {
            setEntry(t, "invites", invite["id"].toString(), {});
            return openSession(t, invite["user"].toString(), namesIn(invite["groups"]),
                               call.query.value("machine"));
        }
    }
    return Refusal{404, "no such invite, or it has expired"};
}

Reply requestAccess(PeopleTables& t, const QJsonObject& body) {
    QJsonObject request{{"created_at", timestamp()}};
    for (const char* key : {"name", "email", "message"}) {
        request[key] = body[key].toString();
    }
    if (request["name"].toString().isEmpty() || request["email"].toString().isEmpty()) {
        return Refusal{400, "a request needs a name and an email address"};
    }
    setEntry(t, "requests", newSecret().first(8), request);
    return QJsonObject{};
}

Reply listRequests(const PeopleTables& t, const Call&) {
    QJsonArray requests = listed(t, "requests", "id");
    for (QJsonValueRef reference : requests) {
        QJsonObject request = reference.toObject();
        request["user_exists"] = !entryOf(t, "users", request["name"].toString()).isEmpty();
        reference = request;
    }
    return QJsonObject{{"requests", requests}};
}

Reply approve(PeopleTables& t, const Call& call) {
    const QJsonObject request = entryOf(t, "requests", call.name);
    if (request.isEmpty()) {
        return unknown("request", call.name);
    }
    Reply reply = addInvite(t, request["name"].toString(), call);
    if (auto* invite = std::get_if<QJsonObject>(&reply)) {
        setEntry(t, "requests", call.name, {});
        (*invite)["email"] = request["email"];
    }
    return reply;
}

/// Removes an entry that must exist.
Reply drop(PeopleTables& t, const QString& table, const QString& id) {
    if (entryOf(t, table, id).isEmpty()) {
        return unknown(table.chopped(1), id);
    }
    setEntry(t, table, id, {});
    return QJsonObject{};
}

}  // namespace

void addPeopleEndpoints(Router& router, People& people) {
    using Access = Router::Access;
    const auto add = [&](const char* method, const char* pattern, auto work,
                         Access access = Access::kAdmin) {
        const auto endpoint = [&people, work](const Call& call) {
            return people.with([&](PeopleTables& t) { return work(t, call); });
        };
        router.add(method, pattern, endpoint, access);
    };
    // Both directions of a list: its name in the query, POST puts it in, DELETE takes it out.
    const auto addList = [&](const char* pattern, const char* table, const char* key,
                             const char* item, std::initializer_list<const char*> methods) {
        for (const QByteArray method : methods) {
            add(method.constData(), pattern, [=](PeopleTables& t, const Call& call) {
                return list(t, table, call.name, key, call.query.value(item), method == "POST");
            });
        }
    };
    add("GET", "api/me", showCaller, Access::kWithToken);
    add("GET", "api/users", [](const PeopleTables& t, const Call&) -> Reply {
        return QJsonObject{{"users", listed(t, "users", "name")}};
    });
    add("POST", "api/users/*", createUser);
    add("DELETE", "api/users/*", deleteUser);
    add("POST", "api/users/*/groups", joinGroup);
    addList("api/users/*/groups", "users", "groups", "group", {"DELETE"});
    addList("api/users/*/channels", "users", "follows", "channel", {"POST", "DELETE"});
    add("POST", "api/users/*/disabled", setDisabled);
    add("POST", "api/users/*/role", setRole);
    add("POST", "api/users/*/tokens", createToken);
    add("GET", "api/groups", listGroups);
    add("POST", "api/groups/*", createGroup);
    add("DELETE", "api/groups/*", deleteGroup);
    addList("api/groups/*/channels", "groups", "channels", "channel", {"POST", "DELETE"});
    add("POST", "api/invites", [](PeopleTables& t, const Call& call) {
        return addInvite(t, call.query.value("user"), call);
    });
    add("GET", "api/invites", listInvites);
    add("DELETE", "api/invites/*",
        [](PeopleTables& t, const Call& call) { return drop(t, "invites", call.name); });
    add("POST", "api/invites/redeem", redeem, Access::kOpen);
    add("GET", "api/access-requests", listRequests);
    add("POST", "api/access-requests/*/approve", approve);
    add("DELETE", "api/access-requests/*",
        [](PeopleTables& t, const Call& call) { return drop(t, "requests", call.name); });
    router.add(
        "POST", "api/access-requests",
        [&people](const Call& call) {
            // Read before the tables are locked, for a client may take its time.
            const QJsonObject body = jsonBody(call);
            return people.with([&](PeopleTables& t) { return requestAccess(t, body); });
        },
        Access::kOpen);
}

}  // namespace quorvelle::devserver
