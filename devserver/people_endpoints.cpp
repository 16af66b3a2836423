#include "people_endpoints.h"

#include <QDateTime>
#include <QJsonArray>

#include "data_folder.h"

namespace quorvelle::devserver {

namespace {

constexpr int kDefaultInviteDays = 7;
constexpr int kMaxInviteDays = 3650;

/// The refusal of a name that a table does not have, such as "no user 'ann'".
Refusal notIn(QStringView table, const QString& name) {
    return unknown(table.chopped(1).toString(), name);
}

/// Adds an entry to a table that must not have one of the name.
Reply create(PeopleTables& t, QStringView table, const QString& name, const QJsonObject& entry) {
    if (!entryOf(t, table, name).isEmpty()) {
        return Refusal{409, QStringLiteral("%1 '%2' already exists").arg(table.chopped(1), name)};
    }
    setEntry(t, table, name, entry);
    return entry;
}

/// Changes one entry of a table that must exist.
template <class Work>
Reply change(PeopleTables& t, QStringView table, const QString& name, Work work) {
    QJsonObject entry = entryOf(t, table, name);
    if (entry.isEmpty()) {
        return notIn(table, name);
    }
    work(entry);
    setEntry(t, table, name, entry);
    return entry;
}

/// Removes one entry of a table that must exist, and answers with `reply`.
Reply drop(PeopleTables& t, QStringView table, const QString& name, const QJsonObject& reply = {}) {
    if (entryOf(t, table, name).isEmpty()) {
        return notIn(table, name);
    }
    setEntry(t, table, name, {});
    return reply;
}

/// Adds a name to one of an entry's lists, or takes it out.
Reply list(PeopleTables& t, QStringView table, const QString& name, QStringView key,
           const QString& value, bool present) {
    if (value.isEmpty()) {
        return Refusal{400, QStringLiteral("the query lacks the name")};
    }
    return change(t, table, name,
                  [&](QJsonObject& entry) { entry[key] = withName(entry[key], value, present); });
}

/// The entries of a table with their keys as `key`, each completed by `finish`.
template <class Finish>
QJsonArray listed(const PeopleTables& t, QStringView table, QStringView key, Finish finish) {
    QJsonArray entries;
    const QJsonObject all = t[table].toObject();
    for (auto it = all.begin(); it != all.end(); ++it) {
        QJsonObject entry = it->toObject();
        entry[key] = it.key();
        finish(entry);
        entries.append(entry);
    }
    return entries;
}

QJsonArray listed(const PeopleTables& t, QStringView table, QStringView key) {
    return listed(t, table, key, [](QJsonObject&) {});
}

/// The names that a query item lists, with commas between.
QStringList namesOf(const Call& call, const QString& item) {
    return call.item(item).split(',', Qt::SkipEmptyParts);
}

Reply showCaller(const PeopleTables& t, const Call& call) {
    const QString& name = call.caller.name;
    const QJsonObject user = entryOf(t, u"users", name);
    return QJsonObject{
        {QStringLiteral("user"), name},
        {QStringLiteral("name"), name},
        {QStringLiteral("role"), user[u"role"].toString(QStringLiteral("admin"))},
        {QStringLiteral("groups"), user[u"groups"].toArray()},
        {QStringLiteral("channels"), QJsonArray::fromStringList(channelsOf(t, name))}};
}

Reply createUser(PeopleTables& t, const Call& call) {
    const QString role = call.item(u"role", QStringLiteral("member"));
    if (!isRole(role)) {
        return noRole(role);
    }
    // The administrator that every data folder knows stands in no table.
    if (call.name == kAdministrator) {
        return Refusal{409, QStringLiteral("user '%1' already exists").arg(call.name)};
    }
    return withFlag(
        call, u"service",
        [&](bool isService) { return create(t, u"users", call.name, newUser(role, isService)); },
        QStringLiteral("false"));
}

int dropTokens(PeopleTables& t, const QString& user) {
    int dropped = 0;
    for (const QJsonValue& token : listed(t, u"tokens", u"token")) {
        if (token[u"user"] == user) {
            setEntry(t, u"tokens", token[u"token"].toString(), {});
            ++dropped;
        }
    }
    return dropped;
}

Reply deleteUser(PeopleTables& t, const Call& call) {
    const int tokens = dropTokens(t, call.name);
    return drop(t, u"users", call.name, {{QStringLiteral("tokens_removed"), tokens}});
}

Reply disableUser(PeopleTables& t, const Call& call) {
    return withFlag(call, u"value", [&](bool disabled) {
        if (disabled) {
            dropTokens(t, call.name);
        }
        return change(t, u"users", call.name,
                      [&](QJsonObject& user) { user[u"disabled"] = disabled; });
    });
}

Reply setRole(PeopleTables& t, const Call& call) {
    const QString role = call.item(u"value");
    if (!isRole(role)) {
        return noRole(role);
    }
    const QStringList channels = namesOf(call, QStringLiteral("channels"));
    return change(t, u"users", call.name, [&](QJsonObject& user) {
        user[u"role"] = role;
        user[u"channels"] = QJsonArray::fromStringList(channels);
    });
}

Reply createToken(PeopleTables& t, const Call& call) {
    if (!entryOf(t, u"users", call.name)[u"service"].toBool()) {
        return unknown(QStringLiteral("service account"), call.name);
    }
    return QJsonObject{{QStringLiteral("token"), addToken(t, call.name, call.item(u"name"))}};
}

Reply listGroups(const PeopleTables& t, const Call&) {
    const auto addMembers = [&](QJsonObject& group) {
        QJsonArray members;
        for (const QJsonValue& user : listed(t, u"users", u"name")) {
            if (user[u"groups"].toArray().contains(group[u"name"])) {
                members.append(user[u"name"]);
            }
        }
        group[u"members"] = members;
    };
    return QJsonObject{{QStringLiteral("groups"), listed(t, u"groups", u"name", addMembers)}};
}

Reply createGroup(PeopleTables& t, const Call& call) {
    return create(
        t, u"groups", call.name,
        {{QStringLiteral("channels"), QJsonArray()}, {QStringLiteral("sso_managed"), false}});
}

Reply deleteGroup(PeopleTables& t, const Call& call) {
    const int members = withdraw(t, u"users", u"groups", call.name);
    return drop(t, u"groups", call.name, {{QStringLiteral("removed_from_users"), members}});
}

Reply joinGroup(PeopleTables& t, const Call& call) {
    const QString group = call.item(u"group");
    return entryOf(t, u"groups", group).isEmpty()
               ? notIn(u"groups", group)
               : list(t, u"users", call.name, u"groups", group, true);
}

Reply addInvite(PeopleTables& t, const QString& user, const Call& call) {
    bool isNumber = false;
    const int days = call.item(u"days", QString::number(kDefaultInviteDays)).toInt(&isNumber);
    if (user.isEmpty() || !isNumber || days < 1 || days > kMaxInviteDays) {
        return Refusal{
            400,
            QStringLiteral("an invite needs a user, and its days are a number from 1 to 3650")};
    }
    const QStringList groups = namesOf(call, QStringLiteral("groups"));
    for (const QString& group : groups) {
        if (entryOf(t, u"groups", group).isEmpty()) {
            return notIn(u"groups", group);
        }
    }
    const QString code = newSecret();
    const QJsonObject invite{{QStringLiteral("code"), code},
                             {QStringLiteral("user"), user},
                             {QStringLiteral("groups"), QJsonArray::fromStringList(groups)},
                             {QStringLiteral("expires_at"),
                              QDateTime::currentDateTimeUtc().addDays(days).toString(Qt::ISODate)}};
    setEntry(t, u"invites", newSecret().first(8), invite);
    return invite;
}

Reply listInvites(const PeopleTables& t, const Call&) {
    const auto withoutCode = [](QJsonObject& invite) {
        invite.remove(u"code");
        invite[u"expired"] = invite[u"expires_at"].toString() < timestamp();
    };
    return QJsonObject{{QStringLiteral("invites"), listed(t, u"invites", u"id", withoutCode)}};
}

Reply redeem(PeopleTables& t, const Call& call) {
    for (const QJsonValue& invite : listed(t, u"invites", u"id")) {
        if (invite[u"code"] == call.item(u"code") &&
            invite[u"expires_at"].toString() >= timestamp()) {
            setEntry(t, u"invites", invite[u"id"].toString(), {});
            return openSession(t, invite[u"user"].toString(), namesIn(invite[u"groups"]),
                               call.item(u"machine"));
        }
    }
    return Refusal{404, QStringLiteral("no such invite, or it has expired")};
}

Reply requestAccess(PeopleTables& t, const QJsonObject& body) {
    QJsonObject request{{QStringLiteral("created_at"), timestamp()}};
    for (const QString& key :
         {QStringLiteral("name"), QStringLiteral("email"), QStringLiteral("message")}) {
        request[key] = body[key].toString();
    }
    if (request[u"name"].toString().isEmpty() || request[u"email"].toString().isEmpty()) {
        return Refusal{400, QStringLiteral("a request needs a name and an email address")};
    }
    setEntry(t, u"requests", newSecret().first(8), request);
    return QJsonObject{};
}

Reply listRequests(const PeopleTables& t, const Call&) {
    const auto addKnown = [&](QJsonObject& request) {
        request[u"user_exists"] = !entryOf(t, u"users", request[u"name"].toString()).isEmpty();
    };
    return QJsonObject{{QStringLiteral("requests"), listed(t, u"requests", u"id", addKnown)}};
}

Reply approve(PeopleTables& t, const Call& call) {
    const QJsonObject request = entryOf(t, u"requests", call.name);
    if (request.isEmpty()) {
        return notIn(u"requests", call.name);
    }
    Reply reply = addInvite(t, request[u"name"].toString(), call);
    if (auto* invite = std::get_if<QJsonObject>(&reply)) {
        setEntry(t, u"requests", call.name, {});
        (*invite)[u"email"] = request[u"email"];
    }
    return reply;
}

}  // namespace

void addPeopleEndpoints(Router& router, People& people) {
    using Access = Router::Access;
    const auto add = [&](const char* method, QStringView pattern, auto work,
                         Access access = Access::kAdmin) {
        const auto endpoint = [&people, work](const Call& call) {
            return people.with([&](PeopleTables& t) { return work(t, call); });
        };
        router.add(method, pattern, endpoint, access);
    };
    // The literals of the views below last as long as the program.
    const auto addDrop = [&](QStringView pattern, QStringView table) {
        add("DELETE", pattern,
            [=](PeopleTables& t, const Call& call) { return drop(t, table, call.name); });
    };
    // One direction of a list: its name in the query, POST puts it in, DELETE takes it out.
    const auto addList = [&](const char* method, QStringView pattern, QStringView table,
                             QStringView key, const QString& item) {
        const bool present = QByteArray(method) == "POST";
        add(method, pattern, [=](PeopleTables& t, const Call& call) {
            return list(t, table, call.name, key, call.item(item), present);
        });
    };
    const QString channel = QStringLiteral("channel");
    add("GET", u"api/me", showCaller, Access::kWithToken);
    add("GET", u"api/users", [](const PeopleTables& t, const Call&) -> Reply {
        return QJsonObject{{QStringLiteral("users"), listed(t, u"users", u"name")}};
    });
    add("POST", u"api/users/*", createUser);
    add("DELETE", u"api/users/*", deleteUser);
    add("POST", u"api/users/*/groups", joinGroup);
    addList("DELETE", u"api/users/*/groups", u"users", u"groups", QStringLiteral("group"));
    addList("POST", u"api/users/*/channels", u"users", u"follows", channel);
    addList("DELETE", u"api/users/*/channels", u"users", u"follows", channel);
    add("POST", u"api/users/*/disabled", disableUser);
    add("POST", u"api/users/*/role", setRole);
    add("POST", u"api/users/*/tokens", createToken);
    add("GET", u"api/groups", listGroups);
    add("POST", u"api/groups/*", createGroup);
    add("DELETE", u"api/groups/*", deleteGroup);
    addList("POST", u"api/groups/*/channels", u"groups", u"channels", channel);
    addList("DELETE", u"api/groups/*/channels", u"groups", u"channels", channel);
    add("POST", u"api/invites",
        [](PeopleTables& t, const Call& call) { return addInvite(t, call.item(u"user"), call); });
    add("GET", u"api/invites", listInvites);
    addDrop(u"api/invites/*", u"invites");
    add("POST", u"api/invites/redeem", redeem, Access::kOpen);
    add("GET", u"api/access-requests", listRequests);
    add("POST", u"api/access-requests/*/approve", approve);
    addDrop(u"api/access-requests/*", u"requests");
    router.add(
        "POST", u"api/access-requests",
        [&people](const Call& call) {
            // Read before the tables are locked, for a client may take its time.
            const QJsonObject body = jsonBody(call);
            return people.with([&](PeopleTables& t) { return requestAccess(t, body); });
        },
        Access::kOpen);
}

}  // namespace quorvelle::devserver
