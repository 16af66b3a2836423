#pragma once

#include <QJsonObject>
#include <QString>
#include <string>
#include <utility>
#include <vector>

#include "support/fake_server.h"

namespace quorvelle::testing {

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
