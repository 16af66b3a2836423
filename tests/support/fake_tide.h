#pragma once

#include <QJsonObject>
#include <QString>
#include <string>
#include <vector>

#include "support/fake_server.h"

namespace quorvelle::testing {

/// A file of a chunked build: its bytes, cut where the test wants them cut.
struct TideFile {
    QString path;
    std::vector<std::string> chunks;
};
using TideFiles = std::vector<TideFile>;

enum class ChunkForm { kRaw, kZstd };

inline constexpr char kManifestTarget[] = "/store/manifest.json";
inline constexpr char kSignatureTarget[] = "/store/manifest.json.sig";

/// The id of a chunk, and the target under which its presigned URL leads to it.
QString chunkId(const std::string& bytes);
std::string chunkTarget(const std::string& bytes);

QString signingKey();
std::string signatureOf(const std::string& manifest);

/// The manifest of a build, and what the server answers about it.
QJsonObject tideManifest(const QString& channel, const TideFiles& files);
QJsonObject tideDescriptor(const FakeServer& server, const QString& build, const TideFiles& files);

void serveManifest(FakeServer& server, const std::string& manifest);

/// Makes the server carry the build in the channel: the channel's reply, the descriptor,
/// the signed manifest and every chunk. Publishing again moves the channel; chunks stay.
void publishTide(FakeServer& server, const QString& channel, const QString& build,
                 const TideFiles& files, ChunkForm form = ChunkForm::kRaw);

}  // namespace quorvelle::testing
