#include "tide/chunk_source.h"

#include <algorithm>
#include <unordered_map>
#include <utility>

#include "tide/chunk_reader.h"
#include "tide/chunks/chunk_decode.h"
#include "tide/error.h"
#include "tide/limits.h"

namespace tide {

ChunkSource::ChunkSource(StorageProvider& provider, const ChunkUrls& chunkUrls,
                         ConnectionCache& connections, LocalIndex localIndex,
                         const std::vector<ManifestFile>& files)
    : bucket(provider),
      urls(chunkUrls),
      connectionCache(connections),
      index(std::move(localIndex)) {
    std::unordered_map<std::string_view, std::uint64_t> uses;
    for (const ManifestFile& file : files) {
        for (const ManifestChunk& chunk : file.chunks) {
            ++uses[chunk.id];
        }
    }
    for (const auto& [id, count] : uses) {
        if (count > 1) {
            usesLeft.emplace(id, count);
        }
    }
}

bool ChunkSource::find(const ManifestChunk& chunk, std::uint64_t offset,
                       const std::vector<std::filesystem::path>& seeds, std::string_view& bytes,
                       std::string* err) {
    const auto cached = cache.find(chunk.id);
    if (cached != cache.end()) {
        bytes = cached->second;
    } else if (readFromDisk(chunk, offset, seeds)) {
        bytes = buffer;
    } else if (fetch(chunk, err)) {
        bytes = keepFetched(chunk.id);
    } else {
        return false;
    }
    // The bytes are those of the id; the manifest may still tell another length of them, and
    // the offsets of all that follows rest on it.
    return bytes.size() == chunk.length || fail(err, "chunk size mismatch for ", chunk.id);
}

void ChunkSource::expect(const ManifestChunk& chunk) {
    const auto known = index.find(chunk.id);
    if (known != index.end() && !cache.contains(chunk.id)) {
        ahead.begin(chunk, known->second);
    }
}

bool ChunkSource::readFromDisk(const ManifestChunk& chunk, std::uint64_t offset,
                               const std::vector<std::filesystem::path>& seeds) {
    if (ahead.take(chunk, buffer)) {
        return true;
    }
    // The index is a claim about files that may have changed since; read() hashes.
    const auto known = index.find(chunk.id);
    if (known != index.end() && known->second.length == chunk.length &&
        ChunkReader(known->second.file).read(chunk, known->second.offset, buffer)) {
        return true;
    }
    return std::any_of(seeds.begin(), seeds.end(), [&](const auto& file) {
        return ChunkReader(file).read(chunk, offset, buffer);
    });
}

bool ChunkSource::fetch(const ManifestChunk& chunk, std::string* err) {
    // The chunk before this one: with a large one on its way, memory for both would be taken.
    buffer = std::string();
    std::string raw;
    return fetchRaw(chunk.id, raw, err) && decodeChunk(raw, chunk.id, buffer, err);
}

bool ChunkSource::fetchRaw(const std::string& id, std::string& raw, std::string* err) {
    if (urls.empty()) {
        return bucket.get(bucket.chunkKey(id), raw, err);
    }
    const auto url = urls.find(id);
    if (url == urls.end()) {
        return fail(err, "no presigned URL for chunk ", id);
    }
    const HttpOptions options{.maxBody = kMaxChunkBytes, .connections = &connectionCache};
    long status = 0;
    if (!httpGet(url->second, raw, status, err, {}, options)) {
        return false;
    }
    return isSuccess(status) || fail(err, "chunk URL ", id, " -> HTTP ", std::to_string(status));
}

std::string_view ChunkSource::keepFetched(const std::string& id) {
    // What is not asked for again, or no longer fits, is not kept: once written, it can be
    // read back from the file that it went into.
    if (!isWantedAgain(id) || cachedBytes + buffer.size() > kMaxCachedBytes) {
        return buffer;
    }
    cachedBytes += buffer.size();
    return cache.insert_or_assign(id, std::move(buffer)).first->second;
}

bool ChunkSource::isWantedAgain(const std::string& id) const {
    const auto left = usesLeft.find(id);
    return left != usesLeft.end() && left->second > 1;
}

void ChunkSource::markUsed(const ManifestChunk& chunk) {
    const auto left = usesLeft.find(chunk.id);
    if (left == usesLeft.end() || --left->second > 0) {
        return;
    }
    usesLeft.erase(left);
    const auto cached = cache.find(chunk.id);
    if (cached != cache.end()) {
        cachedBytes -= cached->second.size();
        cache.erase(cached);
    }
}

void ChunkSource::fileMoved(const std::filesystem::path& from, const std::filesystem::path& to) {
    for (auto& [id, place] : index) {
        if (place.file == from) {
            place.file = to;
        }
    }
}

void ChunkSource::fileWritten(const std::filesystem::path& path, const ManifestFile& file) {
    std::uint64_t offset = 0;
    for (const ManifestChunk& chunk : file.chunks) {
        // In the place of what the index knew before: that may be overwritten by the next
        // file, this stays until the end of the run.
        if (usesLeft.contains(chunk.id)) {
            index.insert_or_assign(chunk.id, ChunkRef{path, offset, chunk.length});
        }
        offset += chunk.length;
    }
}

}  // namespace tide
