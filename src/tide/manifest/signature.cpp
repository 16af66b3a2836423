#include "tide/manifest/signature.h"

#include <sodium.h>

#include <array>

#include "tide/error.h"

namespace tide {

namespace {

template <std::size_t kSize>
bool decodeHex(const std::string& hex, std::array<unsigned char, kSize>& bytes) {
    std::size_t length = 0;
    return sodium_hex2bin(bytes.data(), bytes.size(), hex.data(), hex.size(), nullptr, &length,
                          nullptr) == 0 &&
           length == kSize;
}

}  // namespace

bool verifyEd25519(const std::string& publicKeyHex, const std::string& message,
                   const std::string& signatureHex, std::string* err) {
    std::array<unsigned char, crypto_sign_PUBLICKEYBYTES> publicKey{};
    if (!decodeHex(publicKeyHex, publicKey)) {
        return fail(err, "bad public key");
    }
    std::array<unsigned char, crypto_sign_BYTES> signature{};
    if (!decodeHex(signatureHex, signature)) {
        return fail(err, "bad signature");
    }
    const auto* bytes = reinterpret_cast<const unsigned char*>(message.data());
    if (crypto_sign_verify_detached(signature.data(), bytes, message.size(), publicKey.data()) !=
        0) {
        return fail(err, "signature does not verify");
    }
    return true;
}

}  // namespace tide
