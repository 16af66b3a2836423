#pragma once

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace tide::fuzz {

inline std::string textOf(const std::uint8_t* bytes, std::size_t size) {
    return {reinterpret_cast<const char*>(bytes), size};
}

/// Ends the process, as a fuzzer notices it, unless the promise was kept.
inline void expect(bool kept, const char* promise) {
    if (!kept) {
        std::fprintf(stderr, "broken: %s\n", promise);
        std::abort();
    }
}

/// Checks what every function of the engine promises about its error text, given one that
/// was "untouched" before the call.
inline void expectReason(bool accepted, const std::string& err, const std::string& beginning) {
    expect(accepted == (err == "untouched"), "the reason is assigned on failure alone");
    expect(accepted || err.starts_with(beginning), "a refusal says what was refused");
}

/// Takes the first line off the text and returns it; all of it when there is only one.
inline std::string takeLine(std::string& text) {
    const std::size_t end = text.find('\n');
    std::string line = text.substr(0, end);
    text.erase(0, end == std::string::npos ? end : end + 1);
    return line;
}

}  // namespace tide::fuzz
