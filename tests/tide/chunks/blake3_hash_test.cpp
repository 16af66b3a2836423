#include "tide/chunks/blake3_hash.h"

#include <gtest/gtest.h>

namespace tide {
namespace {

struct Known {
    std::size_t length;
    const char* digest;
};

// The digests published with the algorithm, for inputs that count 0 to 250 over and over;
// confirmed with the b3sum program.
constexpr Known kKnown[] = {
    {0, "af1349b9f5f9a1a6a0404dea36dcc9499bcb25c9adc112b7cc9a93cae41f3262"},
    {1025, "d00278ae47eb27b34faecf67b4fe263f82d5412916c1ffd97c8cb7fb814b8444"},
    {31744, "62b6960e1a44bcc1eb1a611a8d6235b6b4b78f32e7abc4fb4c6cdcce94895c47"},
};

TEST(Blake3HashTest, ReproducesThePublishedDigestsInWholeAndInPieces) {
    for (const Known& known : kKnown) {
        SCOPED_TRACE(known.length);
        std::string input;
        for (std::size_t i = 0; i < known.length; ++i) {
            input += static_cast<char>(i % 251);
        }
        EXPECT_EQ(blake3Hex(input), known.digest);
        Blake3Hash pieces;
        pieces.add("forgotten");
        pieces.reset();
        for (std::size_t at = 0; at < input.size(); at += 777) {
            pieces.add(std::string_view(input).substr(at, 777));
        }
        EXPECT_EQ(pieces.hex(), known.digest);
    }
}

}  // namespace
}  // namespace tide
