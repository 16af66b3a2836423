#include "tide/chunk_source.h"

#include <gmock/gmock.h>

#include "tide/tide_files.h"

namespace tide::testing {
namespace {

// Five chunks of 60 MiB, each wanted twice: four fit into memory.
TEST(ChunkSourceTest, MemoryHoldsAtMost256MiB) {
    MemoryBucket bucket;
    ManifestFile file{"f", 0, {}};
    for (char letter = 'a'; letter <= 'e'; ++letter) {
        const std::string bytes(std::size_t{60} << 20, letter);
        file.chunks.push_back({blake3Hex(bytes), bytes.size()});
        bucket.objects[bucket.chunkKey(file.chunks.back().id)] = bytes;
    }
    const ChunkUrls noUrls;
    ConnectionCache connections;
    ChunkSource source(bucket, noUrls, connections, {}, {file, file});
    for (int round = 0; round < 2; ++round) {
        for (const ManifestChunk& chunk : file.chunks) {
            std::string_view bytes;
            ASSERT_TRUE(source.find(chunk, 0, {}, bytes, nullptr));
            EXPECT_EQ(bytes.size(), chunk.length);
            EXPECT_EQ(blake3Hex(bytes), chunk.id);
            source.markUsed(chunk);
        }
    }
    EXPECT_EQ(bucket.fetched.size(), 6U);
    EXPECT_EQ(bucket.fetched.back(), bucket.chunkKey(file.chunks[4].id));
}

TEST(ChunkSourceTest, APlaceOnDiskIsBelievedOnlyWhenItsBytesHash) {
    const TempDir temp;
    // Long enough to be read ahead.
    const std::string wanted(std::size_t{1} << 20, 'w');
    const std::uint64_t size = wanted.size();
    writeFile(temp / "f", ".." + wanted + "..");
    const ManifestChunk chunk{blake3Hex(wanted), size};
    struct Row {
        const char* name;
        ChunkRef place;
        std::size_t fetches;
    };
    const Row rows[] = {
        {"right", {temp / "f", 2, size}, 0},
        {"wrong offset", {temp / "f", 3, size}, 1},
        {"wrong length", {temp / "f", 2, size - 1}, 1},
        {"beyond the end", {temp / "f", 2 * size, size}, 1},
        {"no such file", {temp / "g", 2, size}, 1},
    };
    for (const Row& row : rows) {
        for (const bool expected : {false, true}) {
            SCOPED_TRACE(row.name);
            MemoryBucket bucket;
            bucket.objects[bucket.chunkKey(chunk.id)] = wanted;
            bucket.objects[bucket.chunkKey(blake3Hex("other"))] = "other";
            const ChunkUrls noUrls;
            ConnectionCache connections;
            ChunkSource source(bucket, noUrls, connections, {{chunk.id, row.place}},
                               {{"x", size, {chunk}}});
            std::string_view bytes;
            if (expected) {
                // Another one is asked for all the same.
                source.expect(chunk);
                ASSERT_TRUE(source.find({blake3Hex("other"), 5}, 0, {}, bytes, nullptr));
                EXPECT_EQ(bytes, "other");
                bucket.fetched.clear();
                source.expect(chunk);
            }
            ASSERT_TRUE(source.find(chunk, 0, {}, bytes, nullptr));
            EXPECT_EQ(bytes, wanted);
            EXPECT_EQ(bucket.fetched.size(), row.fetches);
        }
    }
}

}  // namespace
}  // namespace tide::testing
