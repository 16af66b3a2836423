#include "tide/chunk_source.h"

#include <gmock/gmock.h>

#include "tide/tide_files.h"

namespace tide::testing {
namespace {

class ChunkSourceTest : public ::testing::Test {
protected:
    ChunkSource source(const LocalIndex& index, const std::vector<ManifestFile>& files) {
        return {bucket, noUrls, connections, index, files};
    }

    static void expectFound(ChunkSource& source, const ManifestChunk& chunk) {
        std::string_view bytes;
        ASSERT_TRUE(source.find(chunk, 0, {}, bytes, nullptr));
        EXPECT_EQ(bytes.size(), chunk.length);
        EXPECT_EQ(blake3Hex(bytes), chunk.id);
    }

    MemoryBucket bucket;
    const ChunkUrls noUrls;
    ConnectionCache connections;
};

// Five chunks of 60 MiB, each wanted twice: four fit into memory.
TEST_F(ChunkSourceTest, MemoryHoldsAtMost256MiB) {
    ManifestFile file{"f", 0, {}};
    for (char letter = 'a'; letter <= 'e'; ++letter) {
        const std::string bytes(std::size_t{60} << 20, letter);
        file.chunks.push_back({blake3Hex(bytes), bytes.size()});
        bucket.chunk(bytes) = bytes;
    }
    ChunkSource twice = source({}, {file, file});
    for (int round = 0; round < 2; ++round) {
        for (const ManifestChunk& chunk : file.chunks) {
            expectFound(twice, chunk);
            twice.markUsed(chunk);
        }
    }
    EXPECT_EQ(bucket.fetched.size(), 6U);
    EXPECT_EQ(bucket.fetched.back(), std::string(16, 'e'));
}

TEST_F(ChunkSourceTest, APlaceOnDiskIsBelievedOnlyWhenItsBytesHash) {
    const TempDir temp;
    // Long enough to be read ahead.
    const std::string wanted(std::size_t{1} << 20, 'w');
    const std::uint64_t size = wanted.size();
    writeFile(temp / "f", ".." + wanted + "..");
    const ManifestChunk chunk{blake3Hex(wanted), size};
    const ManifestChunk another{blake3Hex("other"), 5};
    bucket.publish({{"x", {wanted, "other"}}});
    struct Row {
        const char* name;
        ChunkRef place;
        std::size_t fetches;
    };
    for (const Row& row : {Row{"right", {temp / "f", 2, size}, 0},
                           {"wrong offset", {temp / "f", 3, size}, 1},
                           {"wrong length", {temp / "f", 2, size - 1}, 1},
                           {"beyond the end", {temp / "f", 2 * size, size}, 1},
                           {"no such file", {temp / "g", 2, size}, 1}}) {
        SCOPED_TRACE(row.name);
        ChunkSource unexpected = source({{chunk.id, row.place}}, {{"x", size, {chunk}}});
        bucket.fetched.clear();
        expectFound(unexpected, chunk);
        EXPECT_EQ(bucket.fetched.size(), row.fetches);

        ChunkSource expected = source({{chunk.id, row.place}}, {{"x", size, {chunk}}});
        expected.expect(chunk);
        // Another one is asked for all the same.
        expectFound(expected, another);
        bucket.fetched.clear();
        expected.expect(chunk);
        expectFound(expected, chunk);
        EXPECT_EQ(bucket.fetched.size(), row.fetches);
    }
}

}  // namespace
}  // namespace tide::testing
