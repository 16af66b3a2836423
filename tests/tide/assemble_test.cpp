#include "tide/assemble.h"

#include "support/fake_server.h"
#include "tide/assembly_fixture.h"

namespace tide::testing {
namespace {

using quorvelle::testing::FakeServer;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

std::string keyOf(const std::string& chunk) {
    return MemoryBucket().chunkKey(blake3Hex(chunk));
}

TEST_F(AssemblyTest, WritesEveryFileAndTellsHowFarItIs) {
    const Build build = {{"bin/app", {"first", "second"}},
                         {"bin/data/\u00fcber \u6f6e.txt", {"text"}},
                         {"empty", {}},
                         {"twice", {"text", "first", "text"}}};
    bucket.publish(build);
    EXPECT_TRUE(assemble()) << err;
    expectAssembled(build);
    EXPECT_THAT(progress, ElementsAre("1/6 5", "2/6 11", "3/6 15", "4/6 19", "5/6 24", "6/6 28"));
    EXPECT_THAT(bucket.fetched, ElementsAre(keyOf("first"), keyOf("second"), keyOf("text")));
}

TEST_F(AssemblyTest, TakesWhatTheInstallHoldsAndLeavesItAlone) {
    const std::string kept = randomBytes(1, 5000);
    const Build build = {{"renamed", {kept}}, {"changed", {"new", "end"}}, {"same", {"a", "b"}}};
    bucket.publish(build);
    writeFile(temp / "install/old name", kept);
    writeFile(temp / "install/changed", "oldend");
    writeFile(temp / "install/same", "ab");
    EXPECT_TRUE(assemble()) << err;
    expectAssembled(build);
    // "end" stands in the install at the offset where it is wanted.
    EXPECT_THAT(bucket.fetched, ElementsAre(keyOf("new")));
    EXPECT_EQ(readFile(temp / "install/changed"), "oldend");
    EXPECT_EQ(readFile(temp / "install/same"), "ab");
    EXPECT_THAT(temp.entries("install"), ElementsAre("changed", "old name", "same"));
}

TEST_F(AssemblyTest, AHalfMadeSecondNameIsNeverWrittenThrough) {
    writeFile(temp / "install/f", "installed");
    fs::create_directories(staging());
    fs::create_hard_link(temp / "install/f", staging() / "f.part");
    const Build build = {{"f", {"installed", " and more"}}};
    bucket.publish(build);
    EXPECT_TRUE(assemble()) << err;
    expectAssembled(build);
    EXPECT_EQ(readFile(temp / "install/f"), "installed");
    EXPECT_THAT(bucket.fetched, ElementsAre(keyOf(" and more")));
}

TEST_F(AssemblyTest, AChunkOfAReplacedFileIsStillFoundWhereItWasWritten) {
    const std::string shared = randomBytes(2, 3000);
    const Build build = {{"a", {shared}}, {"b", {"x", shared}}};
    bucket.publish(build);
    writeFile(staging() / "a", "old");
    EXPECT_TRUE(assemble()) << err;
    expectAssembled(build);
    EXPECT_THAT(bucket.fetched, SizeIs(2));
}

TEST_F(AssemblyTest, StagingEndsUpWithNothingElse) {
    const Build build = {{"a/b/file", {"content"}}, {"top", {"t"}}};
    bucket.publish(build);
    writeFile(staging() / "a/b/file/was/a/folder", "stray");
    writeFile(staging() / "a/stray", "stray");
    writeFile(staging() / "old/tree/stray", "stray");
    EXPECT_TRUE(assemble()) << err;
    expectAssembled(build);
}

TEST_F(AssemblyTest, AFileWhereAFolderIsNeededFailsInEitherOrder) {
    const Build orders[] = {{{"a", {"1"}}, {"a/b", {"2"}}}, {{"a/b", {"2"}}, {"a", {"1"}}}};
    for (const Build& build : orders) {
        bucket.publish(build);
        EXPECT_FALSE(assemble());
        EXPECT_EQ(err, "cannot open " + files::utf8Text(staging() / "a/b.part"));
    }
}

TEST_F(AssemblyTest, AFileInUseEndsTheRunAndKeepsItsPlace) {
    bucket.publish({{"f", {"1"}}});
    onChunk = [&](std::uint64_t) { writeFile(staging() / "f/busy", ""); };
    EXPECT_FALSE(assemble());
    EXPECT_THAT(err, ::testing::StartsWith("'" + files::utf8Text(staging() / "f") +
                                           "' is in use - could not replace it ("));
    EXPECT_TRUE(fs::exists(staging() / "f/busy"));
}

TEST_F(AssemblyTest, RefusesAManifestBeforeAnythingIsWritten) {
    bucket.publish({{"good", {"1"}}, {"../bad", {"2"}}});
    EXPECT_FALSE(assemble());
    EXPECT_EQ(err, "manifest contains an unsafe path: ../bad");
    EXPECT_FALSE(fs::exists(staging()));
    bucket.objects.clear();
    EXPECT_FALSE(assemble());
    EXPECT_EQ(err, "GET channels/app/manifest.json -> HTTP 404");
}

TEST_F(AssemblyTest, EachFailureHasItsText) {
    struct Row {
        const char* name;
        std::function<void(Json::Value& manifest, std::string& object)> damage;
        std::string text;
    };
    const std::string id = blake3Hex("second");
    const std::string file = files::utf8Text(staging() / "f");
    const std::string corrupt = "chunk " + id + " failed to decode/verify (corrupt or tampered)";
    const Row rows[] = {
        {"wrong bytes", [](Json::Value&, std::string& object) { object = "Second"; }, corrupt},
        {"cut short", [](Json::Value&, std::string& object) { object = "secon"; }, corrupt},
        {"nothing", [](Json::Value&, std::string& object) { object = ""; }, corrupt},
        {"other length",
         [](Json::Value& manifest, std::string&) {
             manifest["files"][0]["chunks"][1]["n"] = Json::UInt64{5};
         },
         "chunk size mismatch for " + id},
        {"other size of the file",
         [](Json::Value& manifest, std::string&) {
             manifest["files"][0]["size"] = Json::UInt64{12};
         },
         "size mismatch for " + file},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const Build build = {{"f", {"first", "second"}}};
        bucket.publish(build);
        Json::Value manifest = manifestOf(build);
        row.damage(manifest, bucket.objects[keyOf("second")]);
        bucket.setManifest(manifest);
        writeFile(staging() / "f", "the file before");
        EXPECT_FALSE(assemble());
        EXPECT_EQ(err, row.text);
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
    EXPECT_TRUE(assemble(urls)) << err;
    expectAssembled(build);
    EXPECT_THAT(store.lines(), SizeIs(2));
    EXPECT_EQ(store.connections("/"), 1U);

    fs::remove_all(staging());
    const std::string id = blake3Hex("second");
    store.onJson("GET", "/second", {}, 403);
    EXPECT_FALSE(assemble(urls));
    EXPECT_EQ(err, "chunk URL " + id + " -> HTTP 403");
    EXPECT_FALSE(fs::exists(staging() / "f"));
    urls.erase(id);
    EXPECT_FALSE(assemble(urls));
    EXPECT_EQ(err, "no presigned URL for chunk " + id);
}

}  // namespace
}  // namespace tide::testing
