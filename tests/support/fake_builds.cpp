#include "support/fake_builds.h"

#include <zstd.h>

#include <QJsonArray>
#include <QUrl>

#include "tide/tide_files.h"

namespace quorvelle::testing {

namespace {

std::string encoded(const QString& text) {
    return QUrl::toPercentEncoding(text).toStdString();
}

std::string compressed(const std::string& bytes) {
    std::string frame(ZSTD_compressBound(bytes.size()), '\0');
    frame.resize(ZSTD_compress(frame.data(), frame.size(), bytes.data(), bytes.size(), 3));
    return frame;
}

QString storeUrl(const FakeServer& server, const std::string& target) {
    return server.url() + QString::fromStdString(target);
}

}  // namespace

std::string fileTarget(const QString& build, const QString& path) {
    return "/api/builds/" + encoded(build) + "/files?path=" + encoded(path);
}

void publish(FakeServer& server, const QString& channel, const QString& build,
             const std::vector<BuildFile>& files) {
    QJsonArray entries;
    for (const BuildFile& file : files) {
        entries.append(QJsonObject{{"path", file.path}, {"size", file.bytes.size()}});
        server.onBytes("GET", fileTarget(build, file.path), file.bytes.toStdString());
    }
    server.onJson("GET", "/api/builds/" + encoded(build), {{"files", entries}});
    server.onJson("GET", "/api/channels/" + encoded(channel),
                  {{"build", build}, {"engine", "cargo"}});
}

FakeServer::Answer truncatedAnswer() {
    return [](const httplib::Request&, httplib::Response& response) {
        response.set_content_provider(8, "application/octet-stream",
                                      [](std::size_t at, std::size_t, httplib::DataSink& sink) {
                                          return at == 0 && sink.write("half", 4);
                                      });
    };
}

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
