#pragma once

#include <string>
#include <utility>
#include <vector>

namespace tide {

/// The keys of which any may have signed, each 64 hexadecimal digits: more than one while a
/// publisher goes over to another. None: no signature is asked for. A text is taken for the
/// one key that it spells, an empty one for none.
struct PublicKeys {
    PublicKeys() = default;
    PublicKeys(const std::string& key)
        : hex(key.empty() ? std::vector<std::string>() : std::vector{key}) {}
    PublicKeys(const char* key) : PublicKeys(std::string(key)) {}
    explicit PublicKeys(std::vector<std::string> keys) : hex(std::move(keys)) {}

    bool empty() const { return hex.empty(); }

    std::vector<std::string> hex;
};

/// Whether an Ed25519 detached signature (128 hexadecimal digits, either case, nothing
/// around them) is that of exactly these message bytes under one of the keys, which all
/// have to be keys. `err` may be null; on failure it is assigned "bad public key" (also
/// without any key), "bad signature" or "signature does not verify".
bool verifyEd25519(const PublicKeys& publicKeyHex, const std::string& message,
                   const std::string& signatureHex, std::string* err);

}  // namespace tide
