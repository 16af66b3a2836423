#include "publishing_endpoints.h"

#include <QJsonArray>
#include <algorithm>

namespace quorvelle::devserver {
namespace {

std::variant<bool, Refusal> valueOf(const Call& call) {
    const QString value = call.query.value("value");
    if (value != "true" && value != "false") {
        return Refusal{400,
                       QString("the query item 'value' is 'true' or 'false', not '%1'").arg(value)};
    }
    return value == "true";
}

Reply disableBuild(const Call& call, Service& service) {
    const auto value = valueOf(call);
    if (const auto* refusal = std::get_if<Refusal>(&value)) {
        return *refusal;
    }
    return service.builds.setDisabled(call.name, std::get<bool>(value));
}

Reply deleteBuild(const Call& call, Service& service) {
    const std::lock_guard lock(service.promotions);
    for (const QJsonObject& channel : service.channels.list()) {
        if (channel["build"] == call.name) {
            return Refusal{409, QString("channel '%1' is at build '%2'")
                                    .arg(channel["channel"].toString(), call.name)};
        }
    }
    return service.builds.remove(call.name);
}

/// Takes a channel out of a list that each entry of a table has; returns how many had it.
int unassign(PeopleTables& tables, const QString& table, const QString& list,
             const QString& channel) {
    int count = 0;
    for (const QString& key : tables[table].toObject().keys()) {
        QJsonObject entry = entryOf(tables, table, key);
        if (namesIn(entry[list]).contains(channel)) {
            entry[list] = withName(entry[list], channel, false);
            setEntry(tables, table, key, entry);
            ++count;
        }
    }
    return count;
}

Reply deleteChannel(const Call& call, Service& service) {
    const std::lock_guard lock(service.promotions);
    const Reply removed = service.channels.remove(call.name);
    if (std::holds_alternative<Refusal>(removed)) {
        return removed;
    }
    return service.people.with([&](PeopleTables& tables) -> Reply {
        unassign(tables, "users", "follows", call.name);
        return QJsonObject{
            {"channel", call.name},
            {"unassigned_from_groups", unassign(tables, "groups", "channels", call.name)}};
    });
}

Reply publishChannel(const Call& call, Service& service) {
    const auto value = valueOf(call);
    if (const auto* refusal = std::get_if<Refusal>(&value)) {
        return *refusal;
    }
    return service.channels.change(call.name, {{"public", std::get<bool>(value)}});
}

Reply setLaunchTargets(const Call& call, Service& service) {
    const QJsonValue targets = jsonBody(call)["launch_targets"];
    const QJsonArray list = targets.toArray();
    if (!targets.isArray() ||
        !std::all_of(list.begin(), list.end(), [](QJsonValue v) { return v.isObject(); })) {
        return Refusal{400, "the body must be an object with an array 'launch_targets' of objects"};
    }
    return service.channels.change(call.name, {{"launch_targets", list}});
}

}  // namespace

void addPublishingEndpoints(Router& router, Service& s) {
    router.add("DELETE", "api/builds/*", [&s](const Call& call) { return deleteBuild(call, s); });
    router.add("POST", "api/builds/*/disabled",
               [&s](const Call& call) { return disableBuild(call, s); });
    router.add("DELETE", "api/channels/*",
               [&s](const Call& call) { return deleteChannel(call, s); });
    router.add("POST", "api/channels/*/public",
               [&s](const Call& call) { return publishChannel(call, s); });
    router.add("POST", "api/channels/*/launch",
               [&s](const Call& call) { return setLaunchTargets(call, s); });
}

}  // namespace quorvelle::devserver
