#include "endpoints.h"

#include <QJsonArray>

namespace quorvelle::devserver {
namespace {

/// Writes the body to a file that vanishes unless the build takes it over.
Reply receiveFile(const Call& call, Service& service) {
    const QString path = call.query.value("path");
    if (const auto refusal = service.builds.refusalFor(call.name, path)) {
        return *refusal;
    }
    if (!call.body.isAnnounced()) {
        return Refusal{411, "an upload needs a Content-Length"};
    }
    const auto file = service.folder.newTemporaryFile();
    if (!file) {
        return Refusal{500, "cannot create a temporary file"};
    }
    bool written = true;
    const bool complete = call.body.read([&](const char* data, size_t size) {
        const auto bytes = static_cast<qint64>(size);
        written = written && file->write(data, bytes) == bytes;
    });
    if (!complete) {
        return Refusal{400, "the upload ended before all of the file had arrived"};
    }
    if (!written || !file->flush()) {
        return Refusal{500, QString("cannot store '%1': %2").arg(path, file->errorString())};
    }
    if (const auto refusal = service.builds.add(call.name, path, *file)) {
        return *refusal;
    }
    return QJsonObject{{"build", call.name}, {"path", path}};
}

QJsonObject withChannels(QJsonObject build, const ChannelStore& channels) {
    QJsonArray names;
    for (const QJsonObject& channel : channels.list()) {
        if (channel["build"] == build["build"]) {
            names.append(channel["channel"]);
        }
    }
    build["channels"] = names;
    return build;
}

Reply listBuilds(const Service& service) {
    QJsonArray builds;
    for (const QJsonObject& build : service.builds.list()) {
        builds.append(withChannels(build, service.channels));
    }
    return QJsonObject{{"builds", builds}};
}

Reply showBuild(const Call& call, const Service& service) {
    Reply reply = service.builds.manifest(call.name);
    if (auto* build = std::get_if<QJsonObject>(&reply)) {
        *build = withChannels(*build, service.channels);
    }
    return reply;
}

QJsonObject withSize(QJsonObject channel, const BuildStore& builds) {
    if (const auto build = builds.find(channel["build"].toString())) {
        channel["file_count"] = (*build)["file_count"];
        channel["total_size"] = (*build)["total_size"];
    }
    return channel;
}

Reply listChannels(const Service& service) {
    QJsonArray channels;
    for (const QJsonObject& channel : service.channels.list()) {
        channels.append(withSize(channel, service.builds));
    }
    return QJsonObject{{"channels", channels}};
}

Reply showChannel(const Call& call, const Service& service) {
    const auto found = service.channels.find(call.name);
    if (!found) {
        return Refusal{404, QString("no channel '%1'").arg(call.name)};
    }
    QJsonObject channel = withSize(*found, service.builds);
    channel["schema_version"] = 1;
    return channel;
}

Reply createChannel(const Call& call, Service& service) {
    const QString engine = call.query.value("engine", "cargo");
    if (engine != "cargo" && engine != "tide") {
        return Refusal{400, QString("the engine is 'cargo' or 'tide', not '%1'").arg(engine)};
    }
    return service.channels.create(call.name, engine);
}

Reply promote(const Call& call, Service& service) {
    const QString build = call.query.value("build");
    if (build.isEmpty()) {
        return Refusal{400, "the query item 'build' is missing"};
    }
    const std::lock_guard lock(service.promotions);
    const auto summary = service.builds.find(build);
    if (!summary) {
        return Refusal{404, QString("no finalized build '%1'").arg(build)};
    }
    if ((*summary)["disabled"].toBool()) {
        return Refusal{409, QString("build '%1' is disabled").arg(build)};
    }
    const auto channel = service.channels.find(call.name);
    if (channel && (*channel)["engine"] == "tide") {
        if (const auto refusal = service.tide.publish(call.name, build)) {
            return *refusal;
        }
    }
    return service.channels.promote(call.name, build);
}

Reply showVersion(const Call&) {
    return QJsonObject{{"name", "quorvelle-devserver"},
                       {"version", QUORVELLE_DEVSERVER_VERSION},
                       {"schema_version", 1}};
}

}  // namespace

void addEndpoints(Router& router, Service& s) {
    router.add("GET", "api/version", showVersion, Router::Access::kOpen);

    router.add("GET", "api/builds", [&s](const Call&) { return listBuilds(s); });
    router.add("GET", "api/builds/*", [&s](const Call& call) { return showBuild(call, s); });
    router.add("GET", "api/builds/*/files", [&s](const Call& call) {
        return s.builds.file(call.name, call.query.value("path"));
    });
    router.add("PUT", "api/builds/*/files",
               [&s](const Call& call) { return receiveFile(call, s); });
    router.add("POST", "api/builds/*/finalize",
               [&s](const Call& call) { return s.builds.finalize(call.name); });

    router.add("GET", "api/channels", [&s](const Call&) { return listChannels(s); });
    router.add("GET", "api/channels/*", [&s](const Call& call) { return showChannel(call, s); });
    router.add("POST", "api/channels/*", [&s](const Call& call) { return createChannel(call, s); });
    router.add("POST", "api/channels/*/promote",
               [&s](const Call& call) { return promote(call, s); });
}

}  // namespace quorvelle::devserver
