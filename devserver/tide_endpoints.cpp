#include "tide_endpoints.h"

#include <QFileInfo>
#include <QJsonArray>
#include <QUrl>
#include <functional>

namespace quorvelle::devserver {
namespace {

constexpr char kManifests[] = "manifests";
constexpr char kSignatures[] = "signatures";
constexpr char kChunks[] = "chunks";

/// The percent-encoded path that an expiring URL is made for.
QString pathOf(const QString& kind, const QString& name) {
    return QString("/tide/%1/%2").arg(kind, QString::fromLatin1(QUrl::toPercentEncoding(name)));
}

QJsonObject descriptorOf(const TidePublisher::Published& published, const Call& call,
                         const Signer& signer) {
    const auto& [id, manifest] = published;
    const auto url = [&](const QString& kind, const QString& name) {
        return "http://" + call.host + signer.openPath(pathOf(kind, name));
    };
    QJsonObject chunks;
    for (const QJsonValue& file : manifest["files"].toArray()) {
        for (const QJsonValue& chunk : file["chunks"].toArray()) {
            const QString chunkId = chunk["h"].toString();
            chunks.insert(chunkId, url(kChunks, chunkId));
        }
    }
    return {{"build", manifest["build"]},
            {"created", manifest["created"]},
            {"manifest_url", url(kManifests, id)},
            {"manifest_sig_url", url(kSignatures, id)},
            {"chunks", chunks}};
}

Reply showDescriptor(const Call& call, const Service& service) {
    const auto channel = service.channels.find(call.name);
    if (!channel) {
        return Refusal{404, QString("no channel '%1'").arg(call.name)};
    }
    if ((*channel)["engine"] != "tide") {
        return Refusal{404, QString("channel '%1' is no tide channel").arg(call.name)};
    }
    if ((*channel)["build"].toString().isEmpty()) {
        return Refusal{404, QString("channel '%1' has no build").arg(call.name)};
    }
    if (call.host.isEmpty()) {
        return Refusal{400, "the request names no host to make URLs for"};
    }
    const auto published = service.tide.current(call.name);
    if (!published) {
        return Refusal{404, QString("channel '%1' has no manifest").arg(call.name)};
    }
    return descriptorOf(*published, call, service.signer);
}

/// Serves a file to whoever has an expiring URL for it.
Reply sendFile(const Call& call, const Signer& signer, const QString& kind, const QString& file) {
    if (!signer.isOpen(pathOf(kind, call.name), call.query.value("expires"),
                       call.query.value("sig"))) {
        return Refusal{403, "the URL has expired, or its signature is wrong"};
    }
    if (!QFileInfo(file).isFile()) {
        return Refusal{404, QString("nothing named '%1' among the %2").arg(call.name, kind)};
    }
    return FileBytes{file};
}

}  // namespace

void addTideEndpoints(Router& router, const Service& s) {
    router.add("GET", "api/tide/sync/*",
               [&s](const Call& call) { return showDescriptor(call, s); });

    const auto addFiles = [&](const QString& kind, auto fileOf) {
        const auto serve = [&s, kind, fileOf](const Call& call) {
            return sendFile(call, s.signer, kind, fileOf(s.tide, call.name));
        };
        router.add("GET", "tide/" + kind + "/*", serve, Router::Access::kOpen);
    };
    addFiles(kManifests, std::mem_fn(&TidePublisher::manifestPath));
    addFiles(kSignatures, std::mem_fn(&TidePublisher::signaturePath));
    addFiles(kChunks, std::mem_fn(&TidePublisher::chunkPath));
}

}  // namespace quorvelle::devserver
