#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "files/raw_file.h"
#include "tide/manifest/manifest.h"

namespace tide {

/// What a stretch of a file turns out to be.
enum class ChunkState {
    kMatches,
    /// All bytes are there, but they are others.
    kDiffers,
    /// The file is shorter, missing or unreadable.
    kUnreadable,
};

/// Reads chunks out of one file that lies on disk, and believes no byte unhashed.
class ChunkReader {
public:
    explicit ChunkReader(const std::filesystem::path& path);

    /// Whether the file was unreadable because another program holds it for itself (Windows).
    bool isInUse() const { return file && file->isInUse(); }

    /// Whether `chunk` stands at `offset` (bytes). Takes 1 MiB of memory at most,
    /// whatever length the chunk claims.
    ChunkState check(const ManifestChunk& chunk, std::uint64_t offset);

    /// Reads the chunk that should stand at `offset`. False when it does not, or when it
    /// is longer than a chunk can be (64 MiB); then `bytes` is unspecified.
    bool read(const ManifestChunk& chunk, std::uint64_t offset, std::string& bytes);

private:
    /// Whether so many bytes can stand there.
    bool holds(std::uint64_t offset, std::uint64_t length) const;

    std::optional<files::RawFile> file;
    std::uint64_t size = 0;
    std::vector<char> block;
};

/// The chunks at the beginning of a file that are the first of `chunks`.
struct LeadingChunks {
    std::size_t count = 0;
    std::uint64_t bytes = 0;
};
LeadingChunks leadingChunks(const std::filesystem::path& file,
                            const std::vector<ManifestChunk>& chunks);

/// Whether a regular file, no link, holds exactly what the manifest says: every chunk is
/// read and hashed.
bool holdsFile(const std::filesystem::path& path, const ManifestFile& file);

}  // namespace tide
