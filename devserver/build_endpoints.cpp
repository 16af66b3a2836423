#include "build_endpoints.h"

#include <QJsonArray>

namespace quorvelle::devserver {

namespace {

/// Writes the body to a file that vanishes unless the build takes it over.
Reply receiveFile(const Call& call, Service& service) {
    const QString path = call.item(u"path");
    if (const auto refusal = service.builds.refusalFor(call.name, path)) {
        return *refusal;
    }
    if (!call.body.isAnnounced()) {
        return Refusal{411, QStringLiteral("an upload needs a Content-Length")};
    }
    const auto file = service.folder.newTemporaryFile();
    if (!file) {
        return Refusal{500, QStringLiteral("cannot create a temporary file")};
    }
    bool written = true;
    const bool complete = call.body.read([&](const char* data, size_t size) {
        const auto bytes = static_cast<qint64>(size);
        written = written && file->write(data, bytes) == bytes;
    });
    if (!complete) {
        return Refusal{400, QStringLiteral("the upload ended before all of the file had arrived")};
    }
    if (!written || !file->flush()) {
        return Refusal{500, QStringLiteral("cannot store '%1': %2").arg(path, file->errorString())};
    }
    if (const auto refusal = service.builds.add(call.name, path, *file)) {
        return *refusal;
    }
    return QJsonObject{{QStringLiteral("build"), call.name}, {QStringLiteral("path"), path}};
}

/// The names of the channels that are at a build.
QJsonArray channelsAt(const QString& build, const ChannelStore& channels) {
    QJsonArray names;
    for (const QJsonObject& channel : channels.list()) {
        if (channel[u"build"] == build) {
            names.append(channel[u"channel"]);
        }
    }
    return names;
}

Reply listBuilds(const Service& service) {
    QJsonArray builds;
    for (QJsonObject build : service.builds.list()) {
        build[u"channels"] = channelsAt(build[u"build"].toString(), service.channels);
        builds.append(build);
    }
    return QJsonObject{{QStringLiteral("builds"), builds}};
}

Reply showBuild(const Call& call, const Service& service) {
    Reply reply = service.builds.manifest(call.name);
    if (auto* build = std::get_if<QJsonObject>(&reply)) {
        (*build)[u"channels"] = channelsAt(call.name, service.channels);
    }
    return reply;
}

Reply deleteBuild(const Call& call, Service& service) {
    const std::lock_guard lock(service.promotions);
    const QJsonArray channels = channelsAt(call.name, service.channels);
    if (!channels.isEmpty()) {
        return Refusal{409, QStringLiteral("channel '%1' is at build '%2'")
                                .arg(channels.first().toString(), call.name)};
    }
    return service.builds.remove(call.name);
}

}  // namespace

void addBuildEndpoints(Router& router, Service& s) {
    router.add("GET", u"api/builds", [&s](const Call&) { return listBuilds(s); });
    router.add("GET", u"api/builds/*", [&s](const Call& call) { return showBuild(call, s); });
    router.add("DELETE", u"api/builds/*", [&s](const Call& call) { return deleteBuild(call, s); });
    router.add("GET", u"api/builds/*/files",
               [&s](const Call& call) { return s.builds.file(call.name, call.item(u"path")); });
    router.add("PUT", u"api/builds/*/files",
               [&s](const Call& call) { return receiveFile(call, s); });
    router.add("POST", u"api/builds/*/finalize",
               [&s](const Call& call) { return s.builds.finalize(call.name); });
    router.add("POST", u"api/builds/*/disabled", [&s](const Call& call) {
        return withFlag(call, u"value",
                        [&](bool value) { return s.builds.setDisabled(call.name, value); });
    });
}

}  // namespace quorvelle::devserver
