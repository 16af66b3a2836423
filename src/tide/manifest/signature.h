#pragma once

#include <string>

namespace tide {

/// Whether an Ed25519 detached signature (128 hexadecimal digits, either case, nothing
/// around them) is that of exactly these message bytes under a public key (64
/// hexadecimal digits). `err` may be null; on failure it is assigned "bad public key",
/// "bad signature" or "signature does not verify".
bool verifyEd25519(const std::string& publicKeyHex, const std::string& message,
                   const std::string& signatureHex, std::string* err);

}  // namespace tide
