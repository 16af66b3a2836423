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
    return QStringLiteral("/tide/%1/%2")
        .arg(kind, QString::fromLatin1(QUrl::toPercentEncoding(name)));
}

QJsonObject descriptorOf(const TidePublisher::Published& published, const Call& call,
                         const Signer& signer) {
    const auto& [id, manifest] = published;
    const auto url = [&](const QString& kind, const QString& name) {
        return QStringLiteral("http://") + call.host + signer.openPath(pathOf(kind, name));
    };
    QJsonObject chunks;
    for (const QJsonValue& file : manifest[u"files"].toArray()) {
        for (const QJsonValue& chunk : file[u"chunks"].toArray()) {
            const QString chunkId = chunk[u"h"].toString();
            chunks.insert(chunkId, url(kChunks, chunkId));
        }
    }
    return {{QStringLiteral("build"), manifest[u"build"]},
            {QStringLiteral("created"), manifest[u"created"]},
            {QStringLiteral("manifest_url"), url(kManifests, id)},
            {QStringLiteral("manifest_sig_url"), url(kSignatures, id)},
            {QStringLiteral("chunks"), chunks}};
}

Reply showDescriptor(const Call& call, const Service& service) {
    const auto channel = service.channels.find(call.name);
    if (!channel) {
        return unknown(QStringLiteral("channel"), call.name);
    }
    if ((*channel)[u"engine"] != QStringLiteral("tide")) {
        return Refusal{404, QStringLiteral("channel '%1' is no tide channel").arg(call.name)};
    }
    if ((*channel)[u"build"].toString().isEmpty()) {
        return Refusal{404, QStringLiteral("channel '%1' has no build").arg(call.name)};
    }
    if (call.host.isEmpty()) {
        return Refusal{400, QStringLiteral("the request names no host to make URLs for")};
    }
    const auto published = service.tide.current(call.name);
    if (!published) {
        return Refusal{404, QStringLiteral("channel '%1' has no manifest").arg(call.name)};
    }
    return descriptorOf(*published, call, service.signer);
}

/// Serves a file to whoever has an expiring URL for it.
Reply sendFile(const Call& call, const Signer& signer, const QString& kind, const QString& file) {
    if (!signer.isOpen(pathOf(kind, call.name), call.item(u"expires"), call.item(u"sig"))) {
        return Refusal{403, QStringLiteral("the URL has expired, or its signature is wrong")};
    }
    if (!QFileInfo(file).isFile()) {
        return Refusal{404, QStringLiteral("nothing named '%1' among the %2").arg(call.name, kind)};
    }
    return FileBytes{file};
}

}  // namespace

void addTideEndpoints(Router& router, const Service& s) {
    router.add("GET", u"api/tide/sync/*",
               [&s](const Call& call) { return showDescriptor(call, s); });

    const auto addFiles = [&](const QString& kind, auto fileOf) {
        const auto serve = [&s, kind, fileOf](const Call& call) {
            return sendFile(call, s.signer, kind, fileOf(s.tide, call.name));
        };
        router.add("GET", QStringLiteral("tide/") + kind + QStringLiteral("/*"), serve,
                   Router::Access::kOpen);
    };
    addFiles(kManifests, std::mem_fn(&TidePublisher::manifestPath));
    addFiles(kSignatures, std::mem_fn(&TidePublisher::signaturePath));
    addFiles(kChunks, std::mem_fn(&TidePublisher::chunkPath));
}

}  // namespace quorvelle::devserver
