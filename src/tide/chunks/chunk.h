#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <string>

namespace tide {

/// One chunk of a file as the chunker cuts it.
struct Chunk {
    /// 64 lower-case hexadecimal digits: the BLAKE3-256 digest of the chunk's
    /// uncompressed bytes.
    std::string id;
    /// Where the chunk begins in its file, in bytes.
    std::uint64_t offset = 0;
    /// In bytes.
    std::uint64_t length = 0;
};

/// Where the bytes of a chunk lie on this machine. It is a claim, not a proof: the file
/// may have changed since, so whoever uses the bytes hashes them again.
struct ChunkRef {
    /// Native path.
    std::filesystem::path file;
    std::uint64_t offset = 0;
    std::uint64_t length = 0;
};

/// Chunks present on disk, by chunk id; of several places the first one found.
using LocalIndex = std::map<std::string, ChunkRef>;

}  // namespace tide
