#include "tide/store/s3_provider.h"

#include <gmock/gmock.h>

#include "support/bucket_access.h"
#include "support/fake_server.h"
#include "tide/store/bucket_environment.h"

namespace tide {
namespace {

using namespace quorvelle::testing;
using ::testing::ElementsAre;
using ::testing::SizeIs;

class S3ProviderTest : public ::testing::Test {
protected:
    FakeBucket bucket;
    S3Provider provider{accessTo(bucket)};
    std::string err;
};

// Objects are stored, listed and removed in the tests against an S3 server.
TEST_F(S3ProviderTest, ReadsObjectsOfAnyName) {
    for (const std::string key :
         {"chunks/3f/3f9a", "a b+c%20", "bêta/日本", "?#&=;:@", "up/../x/./y", "a//b"}) {
        SCOPED_TRACE(key);
        bucket.store(key, "\r\n%");
        std::string body = "old";
        EXPECT_TRUE(provider.get(key, body, &err)) << err;
        EXPECT_EQ(body, "\r\n%");
        std::uint64_t size = 0;
        EXPECT_TRUE(provider.head(key, &size, &err)) << err;
        EXPECT_EQ(size, 3U);
    }
    EXPECT_TRUE(provider.head("a//b", nullptr, nullptr));
    EXPECT_FALSE(provider.get("bêta/a b+/../c", err, &err));
    EXPECT_EQ(bucket.log().back(), "GET /tide%20test/b%C3%AAta/a%20b%2B/../c 404");
    EXPECT_EQ(provider.chunkKey("3f9a"), "chunks/3f/3f9a");
    EXPECT_EQ(provider.chunkKey(""), "chunks//");
}

TEST_F(S3ProviderTest, SignsWithAutoWhereNoRegionIsSet) {
    BucketAccess access = accessTo(bucket);
    access.region.clear();
    access.endpoint += "/";
    S3Provider automatic(access);
    bucket.store("k", "x");
    bucket.expectRegion("auto");
    EXPECT_TRUE(automatic.head("k", nullptr, &err)) << err;
    EXPECT_FALSE(provider.head("k", nullptr, &err));
}

TEST_F(S3ProviderTest, IsRefusedWithAnotherSecret) {
    BucketAccess access = accessTo(bucket);
    access.secretAccessKey += "x";
    S3Provider stranger(access);
    std::string body = "kept";
    std::vector<ObjectEntry> entries{{"kept", 1}};
    EXPECT_FALSE(stranger.get("a/k", body, nullptr));
    std::string errors[4];
    EXPECT_FALSE(stranger.put("a/k", "y", &errors[0]));
    EXPECT_FALSE(stranger.head("a/k", nullptr, &errors[1]));
    EXPECT_FALSE(stranger.remove("a/k", &errors[2]));
    EXPECT_FALSE(stranger.list("a/", entries, &errors[3]));
    EXPECT_THAT(errors,
                ElementsAre("PUT a/k -> HTTP 403", "HEAD a/k -> HTTP 403", "DELETE a/k -> HTTP 403",
                            "LIST -> HTTP 403 <Error><Code>SignatureDoesNotMatch</Code></Error>"));
    EXPECT_EQ(body, "kept");
    EXPECT_THAT(entries, SizeIs(1));
}

TEST_F(S3ProviderTest, FailsWhereTheBucketLies) {
    bucket.store("chunks/aa", "bytes");
    for (const auto& [lie, error] :
         {std::pair{Lie::kRedirect, "GET chunks/aa -> HTTP 301"},
          {Lie::kServerError, "GET chunks/aa -> HTTP 500"},
          {Lie::kShortBody, "curl: Transferred a partial file"},
          {Lie::kEndlessBody, "curl: Failed writing received data to disk/application"}}) {
        bucket.lieAbout("chunks/aa", lie);
        std::string body = "kept";
        EXPECT_FALSE(provider.get("chunks/aa", body, &err));
        EXPECT_EQ(err, error);
        EXPECT_EQ(body, "kept");
    }
    std::string body;
    EXPECT_FALSE(provider.get("missing", body, &err));
    EXPECT_EQ(err, "GET missing -> HTTP 404");
}

TEST(S3Listing, EndsWhereTheNextPageIsNotNamedOrNeverNew) {
    const char* pages[] = {
        "<IsTruncated>true</IsTruncated>",
        "<IsTruncated>true</IsTruncated><NextContinuationToken>t</NextContinuationToken>"};
    for (const char* page : pages) {
        FakeServer server;
        server.onBytes("GET", "/b?list-type=2", page);
        server.onBytes("GET", "/b?continuation-token=t&list-type=2", page);
        BucketAccess access;
        access.endpoint = server.url().toStdString();
        access.bucket = "b";
        S3Provider provider(access);
        std::vector<ObjectEntry> entries;
        std::string err;
        EXPECT_FALSE(provider.list("", entries, &err));
        EXPECT_EQ(err, "LIST -> HTTP 200 the page is truncated but names no next one");
    }
}

TEST(BucketEnvironment, NeedsEveryVariableButTheRegion) {
    std::map<std::string, std::string> variables{{"TIDE_S3_ENDPOINT", "https://h"},
                                                 {"TIDE_S3_BUCKET", "b"},
                                                 {"TIDE_S3_KEY", "k"},
                                                 {"TIDE_S3_SECRET", "s"}};
    const auto read = [&variables](const char* name) { return variables[name]; };
    EXPECT_EQ(bucketAccessFrom(read)->region, "");
    variables["TIDE_S3_REGION"] = "eu";
    const auto access = bucketAccessFrom(read);
    EXPECT_THAT((std::vector{access->endpoint, access->region, access->bucket, access->accessKeyId,
                             access->secretAccessKey}),
                ElementsAre("https://h", "eu", "b", "k", "s"));
    for (const char* name :
         {"TIDE_S3_ENDPOINT", "TIDE_S3_BUCKET", "TIDE_S3_KEY", "TIDE_S3_SECRET"}) {
        const std::string value = std::exchange(variables[name], "");
        EXPECT_FALSE(bucketAccessFrom(read)) << name;
        variables[name] = value;
    }
}

}  // namespace
}  // namespace tide
