#include "tide/chunks/chunker.h"

#include <gmock/gmock.h>

#include <cstdlib>

#include "tide/manifest/manifest.h"
#include "tide/tide_files.h"

namespace tide::testing {
namespace {

using fs::path;

constexpr CutScan kScans[] = {&scanByteByByte, &scanInLanes};

std::string contentOf(const Json::Value& known) {
    const std::uint64_t seed = std::strtoull(known["seed"].asCString(), nullptr, 16);
    const std::size_t size = known["size"].asUInt64();
    const std::string kind = known["kind"].asString();
    std::string bytes = randomBytes(seed, kind == "period" ? 65536 : size);
    for (std::size_t i = 0; kind == "holes" && i < size; ++i) {
        bytes[i] = (i / 1572864) % 2 == 1 ? '\0' : bytes[i];
    }
    while (bytes.size() < size) {
        bytes += bytes.substr(0, size - bytes.size());
    }
    return bytes;
}

TEST(ChunkerTest, CutsAsAnIndependentProgramDid) {
    Json::Value document;
    ASSERT_TRUE(
        parseManifest(readFile(path(QUORVELLE_TEST_DATA) / "chunker.json"), document, nullptr));
    ASSERT_EQ(document["cases"].size(), 9U);
    const TempDir temp;
    for (const Json::Value& known : document["cases"]) {
        SCOPED_TRACE(known["name"].asString());
        writeFile(temp / "f", contentOf(known));
        const ChunkerParameters parameters{known["minimum"].asUInt64(), known["normal"].asUInt64(),
                                           known["maximum"].asUInt64()};
        for (const CutScan scan : kScans) {
            Json::Value found = Json::arrayValue;
            const auto add = [&found](const Chunk& chunk) {
                Json::Value& entry = found.append({});
                entry["id"] = chunk.id;
                entry["offset"] = Json::Int64(chunk.offset);
                entry["length"] = Json::Int64(chunk.length);
            };
            EXPECT_TRUE(chunkFile(temp / "f", parameters, add, nullptr, scan));
            EXPECT_EQ(found, known["chunks"]);
        }
    }
}

// Where a search finds its hits: every offset, then the hash that goes on after the last.
std::vector<std::uint64_t> hitsOf(CutScan scan, std::string_view bytes, std::uint64_t mask,
                                  std::uint64_t hash) {
    std::vector<std::uint64_t> hits;
    for (std::size_t at = 0; const std::size_t used = scan(bytes.substr(at), mask, hash);) {
        at += used;
        hits.push_back(at);
        hash = 0;
    }
    hits.push_back(hash);
    return hits;
}

TEST(CutSearchTest, BothSearchesFindTheSameCuts) {
    const std::string random = randomBytes(11, 300000);
    std::string period;
    while (period.size() < 50000) {
        period += random.substr(0, 1000);
    }
    const std::string contents[] = {random, period, std::string(50000, '\0'),
                                    std::string(50000, '\xFF')};
    const std::uint64_t masks[] = {0, 1, 0xFF, 0x3FFF, 0xFFFFF, ~std::uint64_t{0}};
    for (const std::string& content : contents) {
        for (const std::uint64_t mask : masks) {
            // Lengths around one and two rounds of the faster search.
            for (const std::size_t length : {0, 1, 63, 64, 65, 4095, 4096, 4097, 8192, 50000}) {
                SCOPED_TRACE(::testing::Message() << mask << " " << length);
                const std::string_view bytes = std::string_view(content).substr(0, length);
                EXPECT_EQ(hitsOf(&scanInLanes, bytes, mask, 0),
                          hitsOf(&scanByteByByte, bytes, mask, 0));
                EXPECT_EQ(hitsOf(&scanInLanes, bytes, mask, 12345),
                          hitsOf(&scanByteByByte, bytes, mask, 12345));
            }
        }
    }
    EXPECT_GT(hitsOf(&scanInLanes, random, 0x3FFF, 0).size(), 10U);
}

TEST(ChunkerTest, MasksFollowFromTheNormalLength) {
    const ChunkerParameters defaults;
    EXPECT_EQ(cutMasks(defaults.normal).strict, (std::uint64_t{1} << 24) - 1);
    EXPECT_EQ(cutMasks(defaults.normal).loose, (std::uint64_t{1} << 20) - 1);
    EXPECT_EQ(cutMasks(1).strict, 3U);
    EXPECT_EQ(cutMasks(5).loose, 1U);
    EXPECT_EQ(cutMasks(~std::uint64_t{0}).strict, ~std::uint64_t{0});
}

TEST(ChunkerTest, SaysWhyItFailed) {
    const TempDir temp;
    fs::create_directory(temp / "folder");
    writeFile(temp / "f", "x");
    const std::string folder = files::utf8Text(temp / "folder");
    const auto failure = [](const path& file, const ChunkerParameters& parameters) {
        std::string err;
        EXPECT_FALSE(chunkFile(
            file, parameters, [](const Chunk&) {}, &err));
        return err;
    };
    EXPECT_EQ(failure(temp / "none", {}), "cannot open " + files::utf8Text(temp / "none"));
    EXPECT_THAT(failure(temp / "folder", {}),
                ::testing::AnyOf("read error on " + folder, "cannot open " + folder));
    EXPECT_EQ(failure(temp / "f", {8, 8, 4}), "bad chunker parameters");
}

}  // namespace
}  // namespace tide::testing
