#include "tide/manifest/descriptor.h"

#include <gmock/gmock.h>

#include "tide/manifest/manifest.h"

namespace tide {

using ::testing::ElementsAre;
using ::testing::FieldsAre;
using ::testing::IsEmpty;
using ::testing::Pair;

// What is refused, and what a refusal leaves alone, is checked with the fuzz seeds.
TEST(Descriptor, ReadsUrlsAndChunks) {
    SyncDescriptor read{.chunkUrls = {{"old", "old"}}};
    std::string err = "untouched";
    const std::string json = R"({"build": "b1", "manifest_url": "https://x/m?a=1&b=2",
        "manifest_sig_url": "https://x/s", "chunks": {"ff": "https://x/ff", "0a": "https://x/0a"}})";
    ASSERT_TRUE(parseSyncDescriptor(json, read, &err));
    const auto chunks = ElementsAre(Pair("0a", "https://x/0a"), Pair("ff", "https://x/ff"));
    EXPECT_THAT(read, FieldsAre("https://x/m?a=1&b=2", "https://x/s", chunks, "b1"));
    EXPECT_EQ(err, "untouched");
    for (const char* none : {"{}", R"({"manifest_url": null, "chunks": {}})", "null"}) {
        ASSERT_TRUE(parseSyncDescriptor(none, read, nullptr)) << none;
        EXPECT_THAT(read, FieldsAre("", "", IsEmpty(), "0"));
    }
}

/// Also where the text is none for stricter readers.
TEST(Descriptor, NamesTheBuild) {
    for (const auto& [json, build] : {
             std::pair{R"({"build": "b1", "created": 5})", "b1"},
             {R"({"build": "7",} // and more)", "7"},
             {"{\"build\": \"7\", \"x\": \"\xff\"}", "7"},
             {R"({"build": 7})", "7"},
             {R"({"build": "", "created": 5000000000})", "5000000000"},
             {R"({"created": "1700000000"})", "1700000000"},
             {R"({"build": null, "created": 1.7e9})", "1700000000"},
         }) {
        SyncDescriptor read;
        ASSERT_TRUE(parseSyncDescriptor(json, read, nullptr)) << json;
        EXPECT_EQ(read.build, build) << json;
    }
}

/// Each value of a few bytes takes a hundred in memory.
TEST(Descriptor, HoldsNoMoreValuesThanMemoryDoes) {
    Json::Value out;
    EXPECT_TRUE(parseManifest("[1,[2],{}]", out, nullptr, 6));
    std::string err;
    EXPECT_FALSE(parseManifest("[1,[2],{}]", out, &err, 5));
    EXPECT_EQ(err, "manifest parse error: too many values");
    SyncDescriptor descriptor;
    EXPECT_FALSE(parseSyncDescriptor(std::string(kMaxDescriptorValues, '['), descriptor, &err));
    EXPECT_EQ(err, "manifest parse error: too many values");
}

}  // namespace tide
