#include "tide/chunks/chunk_decode.h"

#include <zstd.h>

#include <optional>
#include <string_view>
#include <utility>

#include "tide/chunks/blake3_hash.h"
#include "tide/error.h"
#include "tide/limits.h"

namespace tide {

namespace {

constexpr std::string_view kZstdMagic = "\x28\xB5\x2F\xFD";

std::optional<std::string> decompress(const std::string& raw) {
    if (!raw.starts_with(kZstdMagic)) {
        return std::nullopt;
    }
    // The two values for "unknown" and "no frame" are the largest there are.
    const unsigned long long size = ZSTD_getFrameContentSize(raw.data(), raw.size());
    if (size > kMaxChunkBytes) {
        return std::nullopt;
    }
    std::string content(static_cast<std::size_t>(size), '\0');
    const std::size_t produced =
        ZSTD_decompress(content.data(), content.size(), raw.data(), raw.size());
    if (ZSTD_isError(produced) != 0 || produced != content.size()) {
        return std::nullopt;
    }
    return content;
}

}  // namespace

bool decodeChunk(const std::string& raw, const std::string& id, std::string& out,
                 std::string* err) {
    // The digest alone tells which of the two it is: a raw chunk may begin like a frame.
    if (std::optional<std::string> content = decompress(raw);
        content && blake3Hex(*content) == id) {
        out = std::move(*content);
        return true;
    }
    if (blake3Hex(raw) == id) {
        out = raw;
        return true;
    }
    return fail(err, "chunk ", id, " failed to decode/verify (corrupt or tampered)");
}

}  // namespace tide
