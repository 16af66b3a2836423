#include "tide/assembly_fixture.h"
#include "tide/chunks/chunker.h"

namespace tide::testing {
namespace {

using ::testing::IsEmpty;
using ::testing::SizeIs;

TEST_F(ResumeTest, GoesOnAfterBrokenConnectionsOneUponTheOther) {
    std::size_t fetched = 0;
    for (bucket.breakAfter = 1; !assemble(); ++bucket.breakAfter) {
        EXPECT_THAT(err, ::testing::EndsWith("-> HTTP 404"));
        fetched += bucket.fetched.size();
        ASSERT_LT(fetched, 100U);
    }
    expectAssembled(build);
    EXPECT_EQ(fetched + bucket.fetched.size(), kChunks + 2);
}

// Whenever the process dies, one chunk at most is lost.
TEST_F(ResumeTest, ChunksReachTheFileBeforeTheNextIsDone) {
    std::uint64_t before = 0;
    onChunk = [&](std::uint64_t done) {
        if (done > 1 && done <= kChunks + 1) {
            EXPECT_GE(fs::file_size(staging() / "large.part"), before);
            before += build[1].second[done - 2].size();
        }
    };
    EXPECT_TRUE(assemble()) << err;
}

TEST_F(ResumeTest, AFinishedStagingIsKeptWithoutOneFetch) {
    ASSERT_TRUE(assemble());
    const auto before = fs::last_write_time(staging() / "large");
    EXPECT_TRUE(assemble());
    EXPECT_THAT(bucket.fetched, IsEmpty());
    EXPECT_EQ(fs::last_write_time(staging() / "large"), before);
    expectAssembled(build);
}

// A file whose beginning is good is gone on with where it stands: it may be as large as what
// is left of the disk. What else a half-written file holds is kept aside until the end.
TEST_F(ResumeTest, DamageInTheHalfWrittenFileCostsOneChunk) {
    const std::string content = joined(build[1].second);
    struct Row {
        const char* name;
        std::string part;
        std::size_t fetches;  // "small" and "last" among them
        bool inPlace;
    };
    std::string flipped = content;
    flipped[100000] = static_cast<char>(flipped[100000] ^ 1);
    std::string zeros = content;
    zeros.replace(200000, 40000, 40000, '\0');
    const Row rows[] = {
        {"whole", content, 2, true},
        {"torn last chunk", content.substr(0, content.size() - 1), 3, true},
        {"bytes behind the end", content + "behind", 2, false},
        {"a flipped bit", flipped, 3, false},
        {"a hole across two chunks", zeros, 4, false},
        {"empty", "", 12, false},
        {"something else", "something else", 12, false},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        fs::remove_all(staging());
        writeFile(staging() / "large.part", row.part);
        bool keptAside = false;
        onChunk = [&](std::uint64_t) { keptAside |= fs::exists(staging() / "leftover-1"); };
        EXPECT_TRUE(assemble()) << err;
        expectAssembled(build);
        EXPECT_THAT(bucket.fetched, SizeIs(row.fetches));
        EXPECT_NE(keptAside, row.inPlace);
    }
}

// A leftover of another build: its chunks serve wherever they are wanted now, also after
// its own name was needed, and a second interruption does not lose them.
TEST_F(ResumeTest, ChunksOfAForeignLeftoverOutliveTheReuseOfItsName) {
    std::vector<std::string> cut;
    const std::string content = randomBytes(77, 20 << 20);
    writeFile(temp / "scratch", content);
    ASSERT_TRUE(chunkFile(
        temp / "scratch", {},
        [&](const Chunk& chunk) { cut.push_back(content.substr(chunk.offset, chunk.length)); },
        nullptr));
    ASSERT_GE(cut.size(), 3U);
    build = {{"a", {"first", cut[1], cut[2]}}, {"b", {cut[0], "end"}}};
    bucket.publish(build);
    writeFile(staging() / "a.part", content);
    writeFile(staging() / "leftover-1", "of an earlier run");
    bucket.breakAfter = 1;
    EXPECT_FALSE(assemble());
    EXPECT_THAT(bucket.fetched, SizeIs(1));
    EXPECT_TRUE(fs::exists(staging() / "a"));
    bucket.breakAfter = 100;
    EXPECT_TRUE(assemble()) << err;
    EXPECT_THAT(bucket.fetched, SizeIs(1));
    expectAssembled(build);
}

}  // namespace
}  // namespace tide::testing
