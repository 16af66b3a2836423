#include "tide/chunks/local_index.h"

#include <gmock/gmock.h>

#include "tide/chunks/chunker.h"
#include "tide/tide_files.h"

namespace tide::testing {
namespace {

using ::testing::FieldsAre;

std::string placeOf(const LocalIndex& index, const std::string& bytes) {
    const auto found = index.find(blake3Hex(bytes));
    return found == index.end() ? "nowhere"
                                : files::utf8Text(found->second.file.filename()) + " " +
                                      std::to_string(found->second.offset) + "+" +
                                      std::to_string(found->second.length);
}

TEST(LocalIndexTest, FindsTheFilesOfWholeTreesAndKeepsTheFirstPlace) {
    const TempDir temp;
    writeFile(temp / "install/a", "aaa");
    writeFile(temp / "install/deep/er/\u00fcml\u00e4ut", "bb");
    writeFile(temp / "install/empty", "");
    writeFile(temp / "second/z", "aaa");
    LocalIndex index;
    buildLocalIndex(temp / "install", index);
    buildLocalIndex(temp / "second", index);
    buildLocalIndex(temp / "missing", index);
    buildLocalIndex(temp / "install/a", index);
    EXPECT_EQ(index.size(), 2U);
    EXPECT_EQ(placeOf(index, "aaa"), "a 0+3");
    EXPECT_EQ(placeOf(index, "bb"), "\u00fcml\u00e4ut 0+2");
}

TEST(LocalIndexTest, AFileIsReadUnlessItIsTheOneThatIsRemembered) {
    const TempDir temp;
    writeFile(temp / "t/d/f", "bytes");
    const files::FileStamp stamp = files::stampOf(temp / "t/d/f").value();
    std::vector<files::FileStamp> others(3, stamp);
    ++others[0].size;
    ++others[1].changed;
    ++others[2].number;
    const Chunk remembered{"remembered", 0, 5};
    const std::vector<IndexedFile> taken = indexFiles(temp / "t", {{"d/f", {stamp, {remembered}}}});
    ASSERT_EQ(taken.size(), 1U);
    EXPECT_EQ(taken[0].chunks[0].id, remembered.id);
    EXPECT_FALSE(taken[0].isHashed);
    for (const files::FileStamp& other : others) {
        const auto read = indexFiles(temp / "t", {{"d/f", {other, {remembered}}}, {"f", {stamp}}});
        EXPECT_EQ(read[0].chunks[0].id, blake3Hex("bytes"));
        EXPECT_TRUE(read[0].isHashed);
    }
}

// With one thread the files are cut in the order of the walk; with several the outcome
// must be the same, repeats within and across files included.
TEST(LocalIndexTest, ThreadsDoNotChangeTheOutcome) {
    const TempDir temp;
    const std::string large = randomBytes(1, 9 << 20);
    for (int i = 0; i < 12; ++i) {
        writeFile(temp / ("t/" + std::to_string(i) + "/f"), i % 3 == 0 ? large : "small");
        writeFile(temp / ("t/" + std::to_string(i) + "/g"), randomBytes(unsigned(i), 2 << 20));
    }
    LocalIndex expected;
    for (const auto& entry : fs::recursive_directory_iterator(temp / "t")) {
        if (entry.is_regular_file()) {
            const auto add = [&](const Chunk& chunk) {
                expected.try_emplace(chunk.id, ChunkRef{entry.path(), chunk.offset, chunk.length});
            };
            ASSERT_TRUE(chunkFile(entry.path(), {}, add, nullptr));
        }
    }
    for (const unsigned threads : {0U, 1U, 2U, 5U}) {
        SCOPED_TRACE(threads);
        LocalIndex index;
        buildLocalIndex(temp / "t", index, threads);
        ASSERT_EQ(index.size(), expected.size());
        for (const auto& [id, place] : expected) {
            EXPECT_THAT(index[id], FieldsAre(place.file, place.offset, place.length));
        }
    }
}

}  // namespace
}  // namespace tide::testing
