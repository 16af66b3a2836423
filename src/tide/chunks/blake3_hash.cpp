#include "tide/chunks/blake3_hash.h"

#include <array>
#include <cstdint>

namespace tide {

std::string Blake3Hash::hex() const {
    std::array<std::uint8_t, BLAKE3_OUT_LEN> digest{};
    blake3_hasher_finalize(&hasher, digest.data(), digest.size());
    constexpr std::string_view kDigits = "0123456789abcdef";
    std::string text;
    text.reserve(2 * digest.size());
    for (const std::uint8_t byte : digest) {
        text += kDigits[byte >> 4U];
        text += kDigits[byte & 15U];
    }
    return text;
}

std::string blake3Hex(std::string_view bytes) {
    Blake3Hash hash;
    hash.add(bytes);
    return hash.hex();
}

}  // namespace tide
