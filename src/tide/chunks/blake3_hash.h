#pragma once

#include <blake3.h>

#include <string>
#include <string_view>

namespace tide {

/// The BLAKE3-256 digest of bytes that arrive in pieces.
class Blake3Hash {
public:
    Blake3Hash() { reset(); }

    /// Forgets what was added.
    void reset() { blake3_hasher_init(&hasher); }

    void add(std::string_view bytes) { blake3_hasher_update(&hasher, bytes.data(), bytes.size()); }

    /// 64 lower-case hexadecimal digits, the form of a chunk id. More may be added after.
    std::string hex() const;

private:
    blake3_hasher hasher;
};

/// The digest of bytes at hand.
std::string blake3Hex(std::string_view bytes);

}  // namespace tide
