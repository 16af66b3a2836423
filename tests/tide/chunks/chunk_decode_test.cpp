#include "tide/chunks/chunk_decode.h"

#include <gtest/gtest.h>
#include <zstd.h>

#include "tide/chunks/blake3_hash.h"

namespace tide {

// What else is taken and refused are seeds of the fuzz target "chunk".
TEST(ChunkDecodeTest, FramesOfMoreThan64MiBAreRefused) {
    for (const std::size_t size : {67108864, 67108865}) {
        const std::string bytes(size, 'a');
        std::string frame(ZSTD_compressBound(size), '\0');
        frame.resize(ZSTD_compress(frame.data(), frame.size(), bytes.data(), size, 1));
        std::string out;
        EXPECT_EQ(decodeChunk(frame, blake3Hex(bytes), out, nullptr), size == 67108864);
        EXPECT_EQ(out.size(), size == 67108864 ? size : 0);
    }
}

}  // namespace tide
