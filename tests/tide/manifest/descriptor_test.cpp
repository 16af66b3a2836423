#include "tide/manifest/descriptor.h"

#include <gmock/gmock.h>

namespace tide {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Pair;

// What is refused, and what a refusal leaves alone, is checked with the fuzz seeds.
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

}  // namespace tide
