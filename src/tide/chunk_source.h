#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "tide/chunks/chunk.h"
#include "tide/manifest/descriptor.h"
#include "tide/manifest/manifest.h"
#include "tide/read_ahead.h"
#include "tide/store/http.h"
#include "tide/store/storage_provider.h"

namespace tide {

/// Decoded chunks kept in memory at a time, in bytes.
inline constexpr std::uint64_t kMaxCachedBytes = std::uint64_t{256} << 20;

/// Where the chunks of one run come from, cheapest first: memory, a place on disk, the
/// network. Whatever the place, the bytes handed out hash to the chunk's id.
class ChunkSource {
public:
    /// Chunks are fetched from `chunkUrls`, or from the bucket when it is empty. The
    /// references are borrowed for the life of the source; `files` is read here: it
    /// tells how often each chunk will be asked for.
    ChunkSource(StorageProvider& provider, const ChunkUrls& chunkUrls, ConnectionCache& connections,
                LocalIndex localIndex, const std::vector<ManifestFile>& files);

    /// Finds a chunk that belongs at `offset` of a file. `seeds` are other versions
    /// of that file: a chunk that the index does not know may well stand at the same
    /// offset there, however it was cut. On success `bytes` is valid until the next
    /// call of find(), markUsed() or fileWritten(); on failure `err`, unless null, is assigned the
    /// reason.
    bool find(const ManifestChunk& chunk, std::uint64_t offset,
              const std::vector<std::filesystem::path>& seeds, std::string_view& bytes,
              std::string* err);

    /// Says which chunk is asked for next: one that a file of this machine holds is read while
    /// the bytes found last are written. They stay valid.
    void expect(const ManifestChunk& chunk);

    /// Says that one of the uses of a chunk that the manifest lists is over. Memory
    /// holds chunks that will be asked for again, and no others.
    void markUsed(const ManifestChunk& chunk);

    /// Says that a file goes by another name now.
    void fileMoved(const std::filesystem::path& from, const std::filesystem::path& to);

    /// Says that a file stands complete on disk, after markUsed() of its chunks.
    void fileWritten(const std::filesystem::path& path, const ManifestFile& file);

private:
    bool readFromDisk(const ManifestChunk& chunk, std::uint64_t offset,
                      const std::vector<std::filesystem::path>& seeds);
    bool fetch(const ManifestChunk& chunk, std::string* err);
    bool fetchRaw(const std::string& id, std::string& raw, std::string* err);
    std::string_view keepFetched(const std::string& id);
    bool isWantedAgain(const std::string& id) const;

    StorageProvider& bucket;
    const ChunkUrls& urls;
    ConnectionCache& connectionCache;
    LocalIndex index;
    /// Of the chunks that are asked for more than once.
    std::unordered_map<std::string, std::uint64_t> usesLeft;
    std::map<std::string, std::string> cache;
    std::uint64_t cachedBytes = 0;
    /// The chunk handed out last, unless the cache holds it.
    std::string buffer;
    ReadAhead ahead;
};

}  // namespace tide
