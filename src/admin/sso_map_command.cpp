#include "admin/sso_map_command.h"

#include <functional>
#include <optional>

#include "admin/roles.h"
#include "console/arguments.h"
#include "console/exit_code.h"
#include "console/output.h"
#include "console/usage.h"
#include "server/on_server.h"

namespace quorvelle {

namespace {

const QString kMappingPath = QStringLiteral("/api/sso/mapping");
const QString kRoles = QStringLiteral("roles");
const QString kGroups = QStringLiteral("groups");

/// Changes the mapping; false when the change cannot be made and the reason was printed.
using Change = std::function<bool(QJsonObject& mapping)>;

/// One line per entry; "(none)" in the place of the entries where there are none.
Lines entriesText(const QJsonObject& entries, const QString& heading, const QString& label) {
    if (entries.isEmpty()) {
        return {heading + QStringLiteral("(none)")};
    }
    Lines text;
    for (auto entry = entries.begin(); entry != entries.end(); ++entry) {
        text << label + entry.key() + QStringLiteral(" -> ") + entry.value().toString();
    }
    return text;
}

Lines mappingText(const QString& server, const QJsonObject& reply) {
    const QJsonObject mapping = reply.value(u"mapping").toObject();
    return lines(
               QStringLiteral("SSO mapping on %1:%2\nclaims:       roles=%3 groups=%4\n"
                              "default role: %5"),
               {server,
                reply.value(u"configured").toBool()
                    ? QString()
                    : QStringLiteral(" (provider not set - defaults)"),
                mapping.value(u"roles_claim").toString(), mapping.value(u"groups_claim").toString(),
                mapping.value(u"default_role").toString()}) +
           entriesText(mapping.value(kRoles).toObject(), QStringLiteral("roles:        "),
                       QStringLiteral("role:         ")) +
           entriesText(mapping.value(kGroups).toObject(), QStringLiteral("groups:       "),
                       QStringLiteral("group:        "));
}

int listMapping(const Server& server) {
    const Reply reply = getJson(server, kMappingPath, QStringLiteral("sso map list"));
    return finish(reply, mappingText(server.url, reply.object));
}

bool isObjectOrMissing(const QJsonValue& value) {
    return value.isObject() || value.isUndefined() || value.isNull();
}

/// The mapping in a reply, empty where it has none yet; nothing when the reply, the mapping
/// or one of its tables is something else. What answers so may stand between us and the
/// server, and a change that started from nothing would drop what is in the real one.
std::optional<QJsonObject> mappingOf(const Reply& reply) {
    const QJsonValue value = reply.object.value(u"mapping");
    const QJsonObject mapping = value.toObject();
    const bool isMapping = isObject(reply) && isObjectOrMissing(value) &&
                           isObjectOrMissing(mapping.value(kRoles)) &&
                           isObjectOrMissing(mapping.value(kGroups));
    return isMapping ? std::optional(mapping) : std::nullopt;
}

int changeMapping(const Server& server, const Change& change) {
    const QString label = QStringLiteral("sso map");
    const Reply current = getJson(server, kMappingPath, label);
    if (!current.ok) {
        return kExitFailed;
    }
    std::optional<QJsonObject> mapping = mappingOf(current);
    if (!mapping) {
        return failWith(kExitFailed,
                        QStringLiteral("%1 failed: the reply holds no mapping").arg(label));
    }
    if (!change(*mapping)) {
        return kExitUsage;
    }
    return finish(putJson(server, kMappingPath, label, *mapping),
                  QStringLiteral("Mapping saved.\n"));
}

/// Sets one entry of the mapping's object of that name.
Change addEntry(const QString& table, const QString& name, const QString& target) {
    return [=](QJsonObject& mapping) {
        QJsonObject entries = mapping.value(table).toObject();
        entries.insert(name, target);
        mapping.insert(table, entries);
        return true;
    };
}

/// Takes a name out of the roles and out of the groups.
Change removeEntry(const QString& name) {
    return [=](QJsonObject& mapping) {
        bool found = false;
        for (const QString& table : {kRoles, kGroups}) {
            QJsonObject entries = mapping.value(table).toObject();
            if (entries.contains(name)) {
                found = true;
                entries.remove(name);
                mapping.insert(table, entries);
            }
        }
        if (!found) {
            printError(QStringLiteral("'%1' is not mapped").arg(name));
        }
        return found;
    };
}

int setClaims(const Server& server, QStringList& args) {
    const QString roles = takeOption(args, QStringLiteral("--roles"));
    const QString groups = takeOption(args, QStringLiteral("--groups"));
    if (!args.isEmpty() || (roles.isEmpty() && groups.isEmpty())) {
        return printUsage();
    }
    return changeMapping(server, [&](QJsonObject& mapping) {
        // One claim alone leaves the other as it is.
        if (!roles.isEmpty()) {
            mapping.insert(u"roles_claim", roles);
        }
        if (!groups.isEmpty()) {
            mapping.insert(u"groups_claim", groups);
        }
        return true;
    });
}

}  // namespace

int ssoMapCommand(const Server& server, QStringList& args) {
    const QString word = args.isEmpty() ? QString() : args.takeFirst();
    if (word == u"list" && args.isEmpty()) {
        return listMapping(server);
    }
    if (word == u"role" && areNames(args, 2) && isRole(args.at(1))) {
        return changeMapping(server, addEntry(kRoles, args.at(0), args.at(1)));
    }
    if (word == u"group" && areNames(args, 2)) {
        return changeMapping(server, addEntry(kGroups, args.at(0), args.at(1)));
    }
    if (word == u"remove" && areNames(args, 1)) {
        return changeMapping(server, removeEntry(args.at(0)));
    }
    if (word == u"default" && areNames(args, 1)) {
        return changeMapping(server, [&](QJsonObject& mapping) {
            mapping.insert(u"default_role", args.at(0));
            return true;
        });
    }
    if (word == u"claims") {
        return setClaims(server, args);
    }
    return printUsage();
}

}  // namespace quorvelle
