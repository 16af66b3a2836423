#include "tide/chunks/chunk_decode.h"

#include <gtest/gtest.h>
#include <zstd.h>

#include "tide/chunks/blake3_hash.h"

namespace tide {
namespace {

std::string fromHex(const std::string& hex) {
    std::string bytes;
    for (std::size_t i = 0; i + 1 < hex.size(); i += 2) {
        bytes += static_cast<char>(std::stoi(hex.substr(i, 2), nullptr, 16));
    }
    return bytes;
}

// Made by zstd 1.5.4 from these files, their digests by b3sum 1.2.0:
//   printf 'tide tide tide tide tide tide tide tide\n' > t; printf 'ebb\n' > e
// and from both at once; the other refusals are seeds of the fuzz target "chunk".
constexpr const char* kText = "tide tide tide tide tide tide tide tide\n";
constexpr const char* kTextId = "0235a1486e8456101aa86709f826fdb0ce9cd80dca76fd3e2382a798fb02b7ec";
constexpr const char* kBothId = "aff933fd5ef1b975641f2f005e41c7ef523e41748e47694e3772bf6b1c03a9a9";

TEST(ChunkDecodeTest, TellsGoodObjectsFromBadOnes) {
    const std::string frame = fromHex("28b52ffd20286500003074696465200a0100708a16");
    const std::string checked = fromHex("28b52ffd24286500003074696465200a0100708a1602e9157f");
    const std::string unsized = fromHex("28b52ffd00586500003074696465200a0100708a16");
    const std::string two = frame + fromHex("28b52ffd20042100006562620a");
    struct Row {
        const char* name;
        std::string raw;
        std::string id;
        std::string content;  // empty: refused
    };
    for (const Row& row : {
             Row{"frame", frame, kTextId, kText},
             Row{"frame with checksum", checked, kTextId, kText},
             Row{"as it is", kText, kTextId, kText},
             Row{"the frame's own bytes are the chunk", frame, blake3Hex(frame), frame},
             Row{"frame without content size", unsized, kTextId, ""},
             Row{"two frames, id of both", two, kBothId, ""},
             Row{"two frames, id of the first", two, kTextId, ""},
             Row{"other content", "other", kTextId, ""},
         }) {
        SCOPED_TRACE(row.name);
        std::string out = "kept";
        std::string err;
        const bool ok = decodeChunk(row.raw, row.id, out, &err);
        EXPECT_EQ(ok, !row.content.empty());
        EXPECT_EQ(out, ok ? row.content : "kept");
        EXPECT_EQ(err,
                  ok ? "" : "chunk " + row.id + " failed to decode/verify (corrupt or tampered)");
        EXPECT_EQ(decodeChunk(row.raw, row.id, out, nullptr), ok);
    }
}

TEST(ChunkDecodeTest, AnEmptyFrameIsTheEmptyChunk) {
    std::string out = "kept";
    // zstd -c --no-check /dev/null
    EXPECT_TRUE(decodeChunk(fromHex("28b52ffd2000010000"), blake3Hex(""), out, nullptr));
    EXPECT_EQ(out, "");
}

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

}  // namespace
}  // namespace tide
