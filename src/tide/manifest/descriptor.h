#pragma once

#include <map>
#include <string>

namespace tide {

/// Presigned download URLs by chunk id.
using ChunkUrls = std::map<std::string, std::string>;

/// Reads the sync descriptor that the server hands out (JSON, UTF-8): "manifest_url",
/// "manifest_sig_url" and "chunks". What is absent reads as empty. Every out-parameter
/// may be null; all are assigned on success alone, `err` on failure alone ("manifest
/// parse error: ...").
bool parseSyncDescriptor(const std::string& json, std::string* manifestUrl,
                         std::string* signatureUrl, ChunkUrls* chunkUrls, std::string* err);

}  // namespace tide
