#pragma once

#include "support/fake_server.h"

/// Builds in a channel of a server, for either engine.

namespace quorvelle::testing {

struct BuildFile {
    QString path;
    QByteArray bytes;
};

/// The target under which a file of a build is asked for.
std::string fileTarget(const QString& build, const QString& path);

/// Makes the server carry the build in the channel: the channel's reply, the build's
/// manifest in the given order and every file. Publishing again moves the channel.
void publish(FakeServer& server, const QString& channel, const QString& build,
             const std::vector<BuildFile>& files);

/// An answer of 200 whose connection ends after half of the promised body.
FakeServer::Answer truncatedAnswer();

/// The files of a chunked build: path and bytes, cut where the test wants them cut.
using TideFiles = std::vector<std::pair<std::string, std::vector<std::string>>>;

enum class ChunkForm { kRaw, kZstd };

inline constexpr char kManifestTarget[] = "/store/manifest.json";
inline constexpr char kSignatureTarget[] = "/store/manifest.json.sig";

/// The id of a chunk, and the target under which its presigned URL leads to it.
QString chunkId(const std::string& bytes);
std::string chunkTarget(const std::string& bytes);

QString signingKey();
std::string signatureOf(const std::string& manifest);

/// The manifest of a build, and what the server answers about it.
std::string tideManifest(const QString& channel, const TideFiles& files);
QJsonObject tideDescriptor(const FakeServer& server, const QString& build, const TideFiles& files);

void serveManifest(FakeServer& server, const std::string& manifest);

/// Makes the server carry the build in the channel: the channel's reply, the descriptor,
/// the signed manifest and every chunk. Publishing again moves the channel; chunks stay.
void publishTide(FakeServer& server, const QString& channel, const QString& build,
                 const TideFiles& files, ChunkForm form = ChunkForm::kRaw);

}  // namespace quorvelle::testing
