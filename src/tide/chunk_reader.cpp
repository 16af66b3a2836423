#include "tide/chunk_reader.h"

#include <algorithm>
#include <optional>
#include <string_view>

#include "files/disk.h"
#include "tide/chunks/blake3_hash.h"
#include "tide/limits.h"

namespace tide {

namespace {

constexpr std::uint64_t kBlock = std::uint64_t{1} << 20;

}  // namespace

ChunkReader::ChunkReader(const std::filesystem::path& file) {
    if (const std::optional<std::uint64_t> found = files::fileSize(file); found) {
        size = *found;
        stream.open(files::openable(file), std::ios::binary);
    }
}

bool ChunkReader::seek(std::uint64_t offset) {
    stream.clear();
    stream.seekg(static_cast<std::streamoff>(offset));
    return stream.good();
}

ChunkState ChunkReader::check(const ManifestChunk& chunk, std::uint64_t offset) {
    // Before anything is read or memory taken: the length is the manifest's word.
    if (!stream.is_open() || offset > size || chunk.length > size - offset || !seek(offset)) {
        return ChunkState::kUnreadable;
    }
    block.resize(std::max(block.size(), static_cast<std::size_t>(std::min(chunk.length, kBlock))));
    Blake3Hash hash;
    for (std::uint64_t left = chunk.length; left > 0;) {
        const auto step = static_cast<std::size_t>(std::min(left, kBlock));
        if (!stream.read(block.data(), static_cast<std::streamsize>(step))) {
            return ChunkState::kUnreadable;
        }
        hash.add(std::string_view(block.data(), step));
        left -= step;
    }
    return hash.hex() == chunk.id ? ChunkState::kMatches : ChunkState::kDiffers;
}

bool ChunkReader::read(const ManifestChunk& chunk, std::uint64_t offset, std::string& bytes) {
    if (!stream.is_open() || chunk.length > kMaxChunkBytes || offset > size ||
        chunk.length > size - offset || !seek(offset)) {
        return false;
    }
    bytes.resize(static_cast<std::size_t>(chunk.length));
    return stream.read(bytes.data(), static_cast<std::streamsize>(bytes.size())) &&
           blake3Hex(bytes) == chunk.id;
}

LeadingChunks leadingChunks(const std::filesystem::path& file,
                            const std::vector<ManifestChunk>& chunks) {
    ChunkReader reader(file);
    LeadingChunks found;
    for (const ManifestChunk& chunk : chunks) {
        if (reader.check(chunk, found.bytes) != ChunkState::kMatches) {
            break;
        }
        ++found.count;
        found.bytes += chunk.length;
    }
    return found;
}

bool holdsFile(const std::filesystem::path& path, const ManifestFile& file) {
    // A link would be one to bytes that somebody else may change.
    if (files::entryKind(path) != files::EntryKind::kFile || files::fileSize(path) != file.size) {
        return false;
    }
    const LeadingChunks found = leadingChunks(path, file.chunks);
    return found.count == file.chunks.size() && found.bytes == file.size;
}

}  // namespace tide
