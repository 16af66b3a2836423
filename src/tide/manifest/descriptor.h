#pragma once

#include <map>
#include <string>
#include <string_view>

namespace tide {

/// Presigned download URLs by chunk id.
using ChunkUrls = std::map<std::string, std::string>;

/// What the server hands out about a channel: where the manifest, its signature and the
/// chunks are. What is absent is empty.
struct SyncDescriptor {
    std::string manifestUrl = {};
    std::string signatureUrl = {};
    ChunkUrls chunkUrls = {};
    /// The build's id: "build", or where that is absent or empty, "created", a whole number;
    /// "0" where both are absent. Either may be a text or a number.
    std::string build = {};
};

/// Reads a descriptor (JSON, UTF-8). `out` is assigned on success alone, `err`, unless null,
/// on failure alone ("manifest parse error: ..."). More than 8 million values are a failure.
bool parseSyncDescriptor(std::string_view json, SyncDescriptor& out, std::string* err);

}  // namespace tide
