#pragma once

#include <string>

namespace tide {

/// Turns a chunk object as fetched into the bytes that `id` names: a zstd frame that
/// records its content size (64 MiB at most) is decompressed, anything else is taken as
/// it is, and the digest decides. On failure `err`, unless null, is assigned "chunk <id>
/// failed to decode/verify (corrupt or tampered)", and `out` keeps what it held.
bool decodeChunk(const std::string& raw, const std::string& id, std::string& out, std::string* err);

}  // namespace tide
