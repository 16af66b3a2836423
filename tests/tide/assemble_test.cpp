#include "tide/assemble.h"

#include "support/fake_server.h"
#include "tide/assembly_fixture.h"
#include "tide/chunks/chunker.h"

namespace tide::testing {
namespace {

using quorvelle::testing::FakeServer;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

TEST_F(AssemblyTest, WritesEveryFileAndTellsHowFarItIs) {
    expectAssembled({{"bin/app", {"first", "second"}},
                     {"bin/data/\u00fcber \u6f6e.txt", {"text"}},
                     {"empty", {}},
                     {"twice", {"text", "first", "text"}}});
    EXPECT_THAT(progress, ElementsAre("1/6 5", "2/6 11", "3/6 15", "4/6 19", "5/6 24", "6/6 28"));
    EXPECT_THAT(bucket.fetched, ElementsAre("first", "second", "text"));
}

TEST_F(AssemblyTest, TakesWhatTheInstallHoldsAndLeavesItAlone) {
    const std::string kept = randomBytes(1, 5000);
    writeFile(temp / "install/old name", kept);
    writeFile(temp / "install/changed", "oldend");
    writeFile(temp / "install/same", "ab");
    expectAssembled({{"renamed", {kept}}, {"changed", {"new", "end"}}, {"same", {"a", "b"}}});
    // "end" stands in the install at the offset where it is wanted.
    EXPECT_THAT(bucket.fetched, ElementsAre("new"));
    EXPECT_EQ(readFile(temp / "install/changed"), "oldend");
    EXPECT_EQ(readFile(temp / "install/same"), "ab");
    EXPECT_THAT(temp.entries("install"), ElementsAre("changed", "old name", "same"));
}

TEST_F(AssemblyTest, AHalfMadeSecondNameIsNeverWrittenThrough) {
    writeFile(temp / "install/f", "installed");
    fs::create_directories(staging());
    fs::create_hard_link(temp / "install/f", staging() / "f.part");
    expectAssembled({{"f", {"installed", " and more"}}});
    EXPECT_EQ(readFile(temp / "install/f"), "installed");
    EXPECT_THAT(bucket.fetched, ElementsAre(" and more"));
}

TEST_F(AssemblyTest, ChunksOfAReplacedFileAreFoundInItAndWhereTheyWereWritten) {
    const std::string shared = randomBytes(2, 3000);
    writeFile(staging() / "a", shared);
    writeFile(staging() / "changed", "oldend");
    expectAssembled({{"a", {"x", shared}}, {"b", {shared}}, {"changed", {"new", "end"}}});
    EXPECT_THAT(bucket.fetched, ElementsAre("x", "new"));
}

TEST_F(AssemblyTest, StagingEndsUpWithNothingElse) {
    writeFile(staging() / "a/b/file/was/a/folder", "stray");
    writeFile(staging() / "a/stray", "stray");
    writeFile(staging() / "old/tree/stray", "stray");
    expectAssembled({{"a/b/file", {"content"}}, {"top", {"t"}}});
}

TEST_F(AssemblyTest, AFileWhereAFolderIsNeededFailsInEitherOrder) {
    const Build orders[] = {{{"a", {"1"}}, {"a/b", {"2"}}}, {{"a/b", {"2"}}, {"a", {"1"}}}};
    for (const Build& build : orders) {
        bucket.publish(build);
        EXPECT_EQ(assemble(), "cannot open " + files::utf8Text(staging() / "a/b.part"));
    }
}

TEST_F(AssemblyTest, AFileInUseEndsTheRunAndKeepsItsPlace) {
    bucket.publish({{"f", {"1"}}});
    onChunk = [&](std::uint64_t) { writeFile(staging() / "f/busy", ""); };
    EXPECT_THAT(assemble(), ::testing::StartsWith("'" + files::utf8Text(staging() / "f") +
                                                  "' is in use - could not replace it ("));
    EXPECT_TRUE(fs::exists(staging() / "f/busy"));
}

TEST_F(AssemblyTest, RefusesAManifestBeforeAnythingIsWritten) {
    bucket.publish({{"good", {"1"}}, {"../bad", {"2"}}});
    EXPECT_EQ(assemble(), "manifest contains an unsafe path: ../bad");
    EXPECT_FALSE(fs::exists(staging()));
}

TEST_F(AssemblyTest, EachFailureHasItsText) {
    struct Row {
        const char* object;
        unsigned length;
        unsigned size;
        std::string text;
    };
    const std::string id = blake3Hex("second");
    const Build build = {{"f", {"first", "second"}}};
    for (const Row& row :
         {Row{"Second", 6, 11, "chunk " + id + " failed to decode/verify (corrupt or tampered)"},
          Row{"second", 5, 11, "chunk size mismatch for " + id},
          Row{"second", 6, 12, "size mismatch for " + files::utf8Text(staging() / "f")}}) {
        bucket.publish(build);
        bucket.chunk("second") = row.object;
        Json::Value manifest = manifestOf(build);
        manifest["files"][0]["chunks"][1]["n"] = row.length;
        manifest["files"][0]["size"] = row.size;
        bucket.setManifest(manifest);
        writeFile(staging() / "f", "the file before");
        EXPECT_EQ(assemble(), row.text);
        EXPECT_EQ(readFile(staging() / "f"), "the file before");
    }
}

TEST_F(AssemblyTest, PresignedUrlsTakeThePlaceOfTheBucket) {
    const Build build = {{"f", {"first", "second"}}, {"g", {"first"}}};
    bucket.setManifest(manifestOf(build));
    FakeServer store;
    ChunkUrls urls;
    for (const std::string chunk : {"first", "second"}) {
        store.onBytes("GET", "/" + chunk, chunk);
        urls[blake3Hex(chunk)] = store.url().toStdString() + "/" + chunk;
    }
    EXPECT_EQ(assemble(urls), "");
    expectStaged(build);
    EXPECT_THAT(store.lines(), SizeIs(2));
    EXPECT_EQ(store.connections("/"), 1U);

    fs::remove_all(staging());
    const std::string id = blake3Hex("second");
    store.onJson("GET", "/second", {}, 403);
    EXPECT_EQ(assemble(urls), "chunk URL " + id + " -> HTTP 403");
    EXPECT_FALSE(fs::exists(staging() / "f"));
    urls.erase(id);
    EXPECT_EQ(assemble(urls), "no presigned URL for chunk " + id);
}

/// Assembles a build whose file "large" has kChunks chunks.
class ResumeTest : public AssemblyTest {
protected:
    ResumeTest() {
        for (unsigned i = 0; i < kChunks; ++i) {
            build[1].second.push_back(randomBytes(i + 1, 40000 + 1000 * i));
        }
        bucket.publish(build);
    }

    static constexpr unsigned kChunks = 10;
    Build build = {{"small", {"s"}}, {"large", {}}, {"last", {"l"}}};
};

TEST_F(ResumeTest, GoesOnAfterBrokenConnectionsOneUponTheOther) {
    std::size_t fetched = 0;
    for (bucket.breakAfter = 1; assemble().ends_with("-> HTTP 404"); ++bucket.breakAfter) {
        fetched += bucket.fetched.size();
        ASSERT_LT(fetched, 100U);
    }
    expectStaged(build);
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
    EXPECT_EQ(assemble(), "");
}

TEST_F(ResumeTest, AFinishedStagingIsKeptWithoutOneFetch) {
    expectAssembled(build);
    const auto before = fs::last_write_time(staging() / "large");
    expectAssembled(build);
    EXPECT_THAT(bucket.fetched, IsEmpty());
    EXPECT_EQ(fs::last_write_time(staging() / "large"), before);
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
    writeFile(staging() / "a.part", content);
    const auto add = [&](const Chunk& chunk) {
        cut.push_back(content.substr(chunk.offset, chunk.length));
    };
    ASSERT_TRUE(chunkFile(staging() / "a.part", {}, add, nullptr));
    ASSERT_GE(cut.size(), 3U);
    build = {{"a", {"first", cut[1], cut[2]}}, {"b", {cut[0], "end"}}};
    bucket.publish(build);
    writeFile(staging() / "leftover-1", "of an earlier run");
    bucket.breakAfter = 1;
    EXPECT_NE(assemble(), "");
    EXPECT_THAT(bucket.fetched, ElementsAre("first"));
    EXPECT_TRUE(fs::exists(staging() / "a"));
    bucket.breakAfter = 100;
    expectAssembled(build);
    EXPECT_THAT(bucket.fetched, ElementsAre("end"));
}

}  // namespace
}  // namespace tide::testing
