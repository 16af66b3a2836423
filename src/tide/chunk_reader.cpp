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

ChunkReader::ChunkReader(const std::filesystem::path& path) {
    if (const std::optional<std::uint64_t> found = files::fileSize(path); found) {
        size = *found;
        file.emplace(path, files::RawFile::For::kReading);
    }
}

bool ChunkReader::holds(std::uint64_t offset, std::uint64_t length) const {
    return file && file->isOpen() && offset <= size && length <= size - offset;
}

ChunkState ChunkReader::check(const ManifestChunk& chunk, std::uint64_t offset) {
    // Before anything is read or memory taken: the length is the manifest's word.
    if (!holds(offset, chunk.length)) {
        return ChunkState::kUnreadable;
    }
    block.resize(std::max(block.size(), static_cast<std::size_t>(std::min(chunk.length, kBlock))));
    Blake3Hash hash;
    for (std::uint64_t done = 0; done < chunk.length;) {
        const auto step = static_cast<std::size_t>(std::min(chunk.length - done, kBlock));
        if (file->read(offset + done, std::span(block.data(), step)) != step) {
            return ChunkState::kUnreadable;
        }
        hash.add(std::string_view(block.data(), step));
        done += step;
    }
    return hash.hex() == chunk.id ? ChunkState::kMatches : ChunkState::kDiffers;
}

bool ChunkReader::read(const ManifestChunk& chunk, std::uint64_t offset, std::string& bytes) {
    if (chunk.length > kMaxChunkBytes || !holds(offset, chunk.length)) {
        return false;
    }
    bytes.resize(static_cast<std::size_t>(chunk.length));
    return file->read(offset, bytes) == bytes.size() && blake3Hex(bytes) == chunk.id;
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
