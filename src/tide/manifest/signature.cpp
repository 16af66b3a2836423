#include "tide/manifest/signature.h"

#include <sodium.h>

#include <algorithm>
#include <array>

#include "tide/error.h"

namespace tide {

namespace {

using PublicKey = std::array<unsigned char, crypto_sign_PUBLICKEYBYTES>;

template <std::size_t kSize>
bool decodeHex(const std::string& hex, std::array<unsigned char, kSize>& bytes) {
    std::size_t length = 0;
    return sodium_hex2bin(bytes.data(), bytes.size(), hex.data(), hex.size(), nullptr, &length,
                          nullptr) == 0 &&
           length == kSize;
}

}  // namespace

bool verifyEd25519(const PublicKeys& publicKeyHex, const std::string& message,
                   const std::string& signatureHex, std::string* err) {
    std::vector<PublicKey> keys(publicKeyHex.hex.size());
    if (keys.empty()) {
        return fail(err, "bad public key");
    }
    for (std::size_t i = 0; i < keys.size(); ++i) {
        if (!decodeHex(publicKeyHex.hex[i], keys[i])) {
            return fail(err, "bad public key");
        }
    }
    std::array<unsigned char, crypto_sign_BYTES> signature{};
    if (!decodeHex(signatureHex, signature)) {
        return fail(err, "bad signature");
    }
    const auto* bytes = reinterpret_cast<const unsigned char*>(message.data());
    const bool isSigned = std::any_of(keys.begin(), keys.end(), [&](const auto& key) {
        return crypto_sign_verify_detached(signature.data(), bytes, message.size(), key.data()) ==
               0;
    });
    return isSigned || fail(err, "signature does not verify");
}

}  // namespace tide
