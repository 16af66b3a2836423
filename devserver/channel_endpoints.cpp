#include "channel_endpoints.h"

#include <QJsonArray>
#include <algorithm>

namespace quorvelle::devserver {

namespace {

QJsonObject withSize(QJsonObject channel, const BuildStore& builds) {
    if (const auto build = builds.find(channel[u"build"].toString())) {
        channel[u"file_count"] = (*build)[u"file_count"];
        channel[u"total_size"] = (*build)[u"total_size"];
    }
    return channel;
}

Reply listChannels(const Service& service) {
    QJsonArray channels;
    for (const QJsonObject& channel : service.channels.list()) {
        channels.append(withSize(channel, service.builds));
    }
    return QJsonObject{{QStringLiteral("channels"), channels}};
}

Reply showChannel(const Call& call, const Service& service) {
    const auto found = service.channels.find(call.name);
    if (!found) {
        return unknown(QStringLiteral("channel"), call.name);
    }
    QJsonObject channel = withSize(*found, service.builds);
    channel[u"schema_version"] = 1;
    return channel;
}

Reply createChannel(const Call& call, Service& service) {
    const QString engine = call.item(u"engine", QStringLiteral("cargo"));
    if (engine != u"cargo" && engine != u"tide") {
        return Refusal{400,
                       QStringLiteral("the engine is 'cargo' or 'tide', not '%1'").arg(engine)};
    }
    return service.channels.create(call.name, engine);
}

Reply promote(const Call& call, Service& service) {
    const QString build = call.item(u"build");
    if (build.isEmpty()) {
        return Refusal{400, QStringLiteral("the query item 'build' is missing")};
    }
    const std::lock_guard lock(service.promotions);
    const auto summary = service.builds.find(build);
    if (!summary) {
        return unknown(QStringLiteral("finalized build"), build);
    }
    if ((*summary)[u"disabled"].toBool()) {
        return Refusal{409, QStringLiteral("build '%1' is disabled").arg(build)};
    }
    const auto channel = service.channels.find(call.name);
    if (channel && (*channel)[u"engine"] == QStringLiteral("tide")) {
        if (const auto refusal = service.tide.publish(call.name, build)) {
            return *refusal;
        }
    }
    return service.channels.promote(call.name, build);
}

Reply deleteChannel(const Call& call, Service& service) {
    const std::lock_guard lock(service.promotions);
    const Reply removed = service.channels.remove(call.name);
    if (std::holds_alternative<Refusal>(removed)) {
        return removed;
    }
    return service.people.with([&](PeopleTables& tables) -> Reply {
        withdraw(tables, u"users", u"follows", call.name);
        return QJsonObject{{QStringLiteral("channel"), call.name},
                           {QStringLiteral("unassigned_from_groups"),
                            withdraw(tables, u"groups", u"channels", call.name)}};
    });
}

Reply setLaunchTargets(const Call& call, Service& service) {
    const QJsonValue targets = jsonBody(call)[u"launch_targets"];
    const QJsonArray list = targets.toArray();
    if (!targets.isArray() ||
        !std::all_of(list.begin(), list.end(), [](QJsonValue v) { return v.isObject(); })) {
        return Refusal{400, QStringLiteral("the body must be an object with an array "
                                           "'launch_targets' of objects")};
    }
    return service.channels.change(call.name, {{QStringLiteral("launch_targets"), list}});
}

}  // namespace

void addChannelEndpoints(Router& router, Service& s) {
    router.add("GET", u"api/channels", [&s](const Call&) { return listChannels(s); });
    router.add("GET", u"api/channels/*", [&s](const Call& call) { return showChannel(call, s); });
    router.add("POST", u"api/channels/*",
               [&s](const Call& call) { return createChannel(call, s); });
    router.add("DELETE", u"api/channels/*",
               [&s](const Call& call) { return deleteChannel(call, s); });
    router.add("POST", u"api/channels/*/promote",
               [&s](const Call& call) { return promote(call, s); });
    router.add("POST", u"api/channels/*/public", [&s](const Call& call) {
        return withFlag(call, u"value", [&](bool value) {
            return s.channels.change(call.name, {{QStringLiteral("public"), value}});
        });
    });
    router.add("POST", u"api/channels/*/launch",
               [&s](const Call& call) { return setLaunchTargets(call, s); });
}

}  // namespace quorvelle::devserver
