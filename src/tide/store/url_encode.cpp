#include "tide/store/url_encode.h"

namespace tide {

namespace {

bool passesUnchanged(char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '-' ||
           c == '_' || c == '.' || c == '~';
}

}  // namespace

std::string urlEncode(std::string_view text, bool encodeSlash) {
    static constexpr std::string_view kDigits = "0123456789ABCDEF";
    std::string encoded;
    encoded.reserve(text.size());
    for (const char c : text) {
        if (passesUnchanged(c) || (c == '/' && !encodeSlash)) {
            encoded += c;
            continue;
        }
        const auto byte = static_cast<unsigned char>(c);
        encoded += '%';
        encoded += kDigits[byte >> 4];
        encoded += kDigits[byte & 15];
    }
    return encoded;
}

}  // namespace tide
