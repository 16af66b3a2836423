#include "fuzz/promise.h"
#include "fuzz/targets.h"
#include "tide/chunks/blake3_hash.h"
#include "tide/chunks/chunk_decode.h"
#include "tide/limits.h"

namespace tide::fuzz {

int runChunk(const std::uint8_t* bytes, std::size_t size) {
    std::string raw = textOf(bytes, size);
    const std::string id = takeLine(raw);
    std::string out = "untouched";
    std::string err = "untouched";
    const bool accepted = decodeChunk(raw, id, out, &err);
    expectReason(accepted, err, "chunk " + id + " failed to decode/verify");
    expect(accepted ? blake3Hex(out) == id && out.size() <= kMaxChunkBytes : out == "untouched",
           "only the bytes that the id names come out");

    // A digest cannot be guessed; the one of the stored bytes leads past it.
    std::string stored;
    expect(decodeChunk(raw, blake3Hex(raw), stored, nullptr) && stored == raw,
           "bytes may be stored as they are, whatever they look like");
    return accepted ? 1 : 0;
}

}  // namespace tide::fuzz
