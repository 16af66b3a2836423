#include "support/fake_tide.h"

#include <zstd.h>

#include "tide/tide_files.h"

namespace quorvelle::testing {

namespace {

std::string compressed(const std::string& bytes) {
    std::string frame(ZSTD_compressBound(bytes.size()), '\0');
    frame.resize(ZSTD_compress(frame.data(), frame.size(), bytes.data(), bytes.size(), 3));
    return frame;
}

QString storeUrl(const FakeServer& server, const std::string& target) {
    return server.url() + QString::fromStdString(target);
}

}  // namespace

QString chunkId(const std::string& bytes) {
    return QString::fromStdString(tide::blake3Hex(bytes));
}

std::string chunkTarget(const std::string& bytes) {
    return "/store/chunks/" + tide::blake3Hex(bytes);
}

QString signingKey() {
    return QString::fromStdString(tide::testing::signingKey());
}

std::string signatureOf(const std::string& manifest) {
    return tide::testing::signatureOf(manifest);
}

std::string tideManifest(const QString& channel, const TideFiles& files) {
    return tide::testing::manifestOf(files, channel.toStdString()).toStyledString();
}

QJsonObject tideDescriptor(const FakeServer& server, const QString& build, const TideFiles& files) {
    QJsonObject chunks;
    for (const auto& [path, cut] : files) {
        for (const std::string& bytes : cut) {
            chunks.insert(chunkId(bytes), storeUrl(server, chunkTarget(bytes)));
        }
    }
    return {{"build", build},
            {"manifest_url", storeUrl(server, kManifestTarget)},
            {"manifest_sig_url", storeUrl(server, kSignatureTarget)},
            {"chunks", chunks}};
}

void serveManifest(FakeServer& server, const std::string& manifest) {
    server.onBytes("GET", kManifestTarget, manifest);
    server.onBytes("GET", kSignatureTarget, signatureOf(manifest));
}

void publishTide(FakeServer& server, const QString& channel, const QString& build,
                 const TideFiles& files, ChunkForm form) {
    for (const auto& [path, cut] : files) {
        for (const std::string& bytes : cut) {
            server.onBytes("GET", chunkTarget(bytes),
                           form == ChunkForm::kZstd ? compressed(bytes) : bytes);
        }
    }
    serveManifest(server, tideManifest(channel, files));
    const std::string name = channel.toStdString();
    server.onJson("GET", "/api/tide/sync/" + name, tideDescriptor(server, build, files));
    server.onJson("GET", "/api/channels/" + name, {{"build", build}, {"engine", "tide"}});
}

}  // namespace quorvelle::testing
