#include "tide/chunk_decode.h"

#include <gtest/gtest.h>

#include <cstdint>

#include "tide/blake3_hash.h"

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
constexpr const char* kText = "tide tide tide tide tide tide tide tide\n";
constexpr const char* kTextId = "0235a1486e8456101aa86709f826fdb0ce9cd80dca76fd3e2382a798fb02b7ec";
// cat t e
constexpr const char* kBothId = "aff933fd5ef1b975641f2f005e41c7ef523e41748e47694e3772bf6b1c03a9a9";
// zstd -c --no-check t
constexpr const char* kFrame = "28b52ffd20286500003074696465200a0100708a16";
// zstd -c t
constexpr const char* kChecked = "28b52ffd24286500003074696465200a0100708a1602e9157f";
// cat t | zstd -c --no-check
constexpr const char* kUnsized = "28b52ffd00586500003074696465200a0100708a16";
// zstd -c --no-check e
constexpr const char* kSecond = "28b52ffd20042100006562620a";

TEST(ChunkDecodeTest, TellsGoodObjectsFromBadOnes) {
    struct Row {
        const char* name;
        std::string raw;
        std::string id;
        std::string content;  // empty: refused
    };
    const std::string frame = fromHex(kFrame);
    const std::string lookalike = "\x28\xb5\x2f\xfdnot a frame at all";
    std::string lyingSize = frame;
    lyingSize[5] = 41;
    const Row rows[] = {
        {"frame", frame, kTextId, kText},
        {"frame with checksum", fromHex(kChecked), kTextId, kText},
        {"as it is", kText, kTextId, kText},
        {"the frame's own bytes are the chunk", frame, blake3Hex(frame), frame},
        {"begins like a frame", lookalike,
         "2f5c6074c2472c19b818ac28d5c78ad093c1ba587751c6e0663c841941228f9a", lookalike},
        {"frame without content size", fromHex(kUnsized), kTextId, ""},
        {"unsized frame whose bytes are the chunk", fromHex(kUnsized), blake3Hex(fromHex(kUnsized)),
         fromHex(kUnsized)},
        {"two frames, id of both", frame + fromHex(kSecond), kBothId, ""},
        {"two frames, id of the first", frame + fromHex(kSecond), kTextId, ""},
        {"truncated frame", frame.substr(0, frame.size() - 1), kTextId, ""},
        {"only the magic", frame.substr(0, 4), kTextId, ""},
        {"bytes behind the frame", frame + "x", kTextId, ""},
        {"declares a size too many", lyingSize, kTextId, ""},
        {"other content", "other", kTextId, ""},
        {"nothing", "", kTextId, ""},
        {"id in upper case", "", "AF1349B9", ""},
    };
    for (const Row& row : rows) {
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

// A frame of runs of 'a', written by hand: magic, "single segment, size in 8 bytes", the
// size, then blocks of a 3-byte header (last, kind 1, length) and the byte.
std::string frameOfRuns(std::uint64_t size) {
    std::string frame = fromHex("28b52ffde0");
    for (unsigned shift = 0; shift < 64; shift += 8) {
        frame += static_cast<char>((size >> shift) & 255U);
    }
    for (std::uint64_t left = size; left > 0;) {
        const std::uint64_t run = left > 131072 ? 131072 : left;
        left -= run;
        const std::uint64_t header = (left == 0 ? 1U : 0U) | 2U | (run << 3U);
        for (unsigned shift = 0; shift < 24; shift += 8) {
            frame += static_cast<char>((header >> shift) & 255U);
        }
        frame += 'a';
    }
    return frame;
}

// The digests of 64 MiB of 'a', and of one byte more, by b3sum.
TEST(ChunkDecodeTest, FramesOfMoreThan64MiBAreRefused) {
    constexpr std::uint64_t kMost = 67108864;
    std::string out;
    EXPECT_TRUE(decodeChunk(frameOfRuns(kMost),
                            "db87a4d942125fb6f4dbf2f5395df544602812eb675bb8ac17c3a6bac55d343d", out,
                            nullptr));
    EXPECT_EQ(out.size(), kMost);
    EXPECT_FALSE(decodeChunk(frameOfRuns(kMost + 1),
                             "9464af8a75bf64db1ce013eb4c16b76576927dff3826364b8c69fc01116d46cc",
                             out, nullptr));
}

}  // namespace
}  // namespace tide
