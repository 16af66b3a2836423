#include "tide/read_ahead.h"

#include <cstdint>
#include <system_error>

#include "tide/chunk_reader.h"

namespace tide {

namespace {

/// Below it a thread costs about what it saves.
constexpr std::uint64_t kMinBytes = std::uint64_t{256} << 10;

}  // namespace

void ReadAhead::begin(const ManifestChunk& chunk, const ChunkRef& place) {
    reading = {};
    if (chunk.length < kMinBytes || place.length != chunk.length) {
        return;
    }
    id = chunk.id;
    try {
        reading = std::async(std::launch::async, [this, chunk, place] {
            return ChunkReader(place.file).read(chunk, place.offset, buffer);
        });
    } catch (const std::system_error&) {
        reading = {};
    }
}

bool ReadAhead::take(const ManifestChunk& chunk, std::string& bytes) {
    if (!reading.valid() || !reading.get() || id != chunk.id) {
        return false;
    }
    bytes.swap(buffer);
    return true;
}

}  // namespace tide
