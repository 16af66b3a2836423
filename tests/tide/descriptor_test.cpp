#include "tide/descriptor.h"

#include <gmock/gmock.h>

#include "tide/manifest.h"

namespace tide {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Pair;
using ::testing::StartsWith;

TEST(Descriptor, ReadsUrlsAndChunks) {
    std::string manifest;
    std::string signature;
    ChunkUrls chunks{{"old", "old"}};
    std::string err = "untouched";
    const std::string json = R"({"build": "b1", "manifest_url": "https://x/m?a=1&b=2",
        "manifest_sig_url": "https://x/s", "chunks": {"ff": "https://x/ff", "0a": "https://x/0a"}})";
    ASSERT_TRUE(parseSyncDescriptor(json, &manifest, &signature, &chunks, &err));
    EXPECT_EQ(manifest, "https://x/m?a=1&b=2");
    EXPECT_EQ(signature, "https://x/s");
    EXPECT_THAT(chunks, ElementsAre(Pair("0a", "https://x/0a"), Pair("ff", "https://x/ff")));
    EXPECT_EQ(err, "untouched");
    EXPECT_TRUE(parseSyncDescriptor(json, nullptr, nullptr, nullptr, nullptr));
}

TEST(Descriptor, ReadsWhatIsAbsentAsEmpty) {
    for (const char* json : {"{}", R"({"manifest_url": null, "chunks": {}})", "null"}) {
        SCOPED_TRACE(json);
        std::string manifest = "old";
        std::string signature = "old";
        ChunkUrls chunks{{"old", "old"}};
        ASSERT_TRUE(parseSyncDescriptor(json, &manifest, &signature, &chunks, nullptr));
        EXPECT_THAT(manifest, IsEmpty());
        EXPECT_THAT(signature, IsEmpty());
        EXPECT_THAT(chunks, IsEmpty());
    }
}

TEST(Descriptor, RefusesWhatItCannotReadAndKeepsTheOutParameters) {
    struct Row {
        const char* name;
        std::string json;
        std::string error;
    };
    const Row rows[] = {
        {"empty", "", "manifest parse error: * Line 1, Column 1"},
        {"cut", R"({"manifest_url": "x")", "manifest parse error: * Line 1, Column 21"},
        {"too deep", std::string(100000, '['), "manifest parse error: Exceeded stackLimit"},
        {"an array", "[]", kMalformedManifest},
        {"a URL that is none", R"({"manifest_url": {}})", kMalformedManifest},
        {"a signature URL that is none", R"({"manifest_sig_url": []})", kMalformedManifest},
        {"chunks that are no map", R"({"chunks": ["x"]})", kMalformedManifest},
        {"a chunk that is no URL", R"({"chunks": {"a": "x", "b": {}}})", kMalformedManifest},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        std::string manifest = "old";
        ChunkUrls chunks{{"old", "old"}};
        std::string err = "replaced";
        EXPECT_FALSE(parseSyncDescriptor(row.json, &manifest, nullptr, &chunks, &err));
        EXPECT_THAT(err, StartsWith(row.error));
        EXPECT_EQ(manifest, "old");
        EXPECT_EQ(chunks.count("old"), 1u);
        EXPECT_FALSE(parseSyncDescriptor(row.json, nullptr, nullptr, nullptr, nullptr));
    }
}

}  // namespace
}  // namespace tide
