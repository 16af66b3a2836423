#include "tide/s3_provider.h"

#include <gmock/gmock.h>

#include "support/bucket_access.h"
#include "support/fake_server.h"
#include "tide/bucket_environment.h"

namespace tide {
namespace {

using quorvelle::testing::accessTo;
using quorvelle::testing::FakeBucket;
using quorvelle::testing::FakeServer;
using quorvelle::testing::Lie;
using ::testing::ElementsAre;
using ::testing::Pair;
using ::testing::SizeIs;

class S3ProviderTest : public ::testing::Test {
protected:
    FakeBucket bucket;
    S3Provider provider{accessTo(bucket)};
    std::string err;
};

TEST_F(S3ProviderTest, StoresReadsAndRemovesObjectsOfAnyName) {
    std::string bytes = "\r\n%";
    bytes.append(300000, '\0');
    for (const std::string key :
         {"plain", "chunks/3f/3f9a", "a b+c%20", "bêta/日本", "?#&=;:@", "up/../x/./y", "a//b"}) {
        SCOPED_TRACE(key);
        ASSERT_TRUE(provider.put(key, bytes, &err)) << err;
        EXPECT_THAT(bucket.objects(), ElementsAre(Pair(key, bytes)));
        std::string body = "old";
        EXPECT_TRUE(provider.get(key, body, &err)) << err;
        EXPECT_EQ(body, bytes);
        std::uint64_t size = 0;
        EXPECT_TRUE(provider.head(key, &size, &err)) << err;
        EXPECT_EQ(size, bytes.size());
        EXPECT_TRUE(provider.head(key, nullptr, nullptr));
        EXPECT_TRUE(provider.remove(key, &err)) << err;
        EXPECT_THAT(bucket.objects(), SizeIs(0));
    }
    EXPECT_TRUE(provider.put("bêta/a b+/../c", "", &err)) << err;
    EXPECT_THAT(bucket.objects(), ElementsAre(Pair("bêta/a b+/../c", "")));
    EXPECT_EQ(bucket.log().back(), "PUT /tide%20test/b%C3%AAta/a%20b%2B/../c 200");
    EXPECT_EQ(provider.chunkKey("3f9a"), "chunks/3f/3f9a");
    EXPECT_EQ(provider.chunkKey(""), "chunks//");
}

TEST_F(S3ProviderTest, ListsOverSeveralPages) {
    std::vector<ObjectEntry> all;
    for (int i = 0; i < 7; ++i) {
        all.push_back({"c/a b+<&>" + std::to_string(i), static_cast<std::uint64_t>(i)});
        bucket.store(all.back().key, std::string(static_cast<std::size_t>(i), 'x'));
    }
    bucket.store("d", "");
    bucket.setPageSize(3);
    std::vector<ObjectEntry> entries{{"replaced", 1}};
    EXPECT_TRUE(provider.list("c/a b+", entries, &err)) << err;
    EXPECT_EQ(entries, all);
    EXPECT_THAT(bucket.log(), SizeIs(3));
    EXPECT_EQ(bucket.log()[0], "GET /tide%20test?list-type=2&prefix=c%2Fa%20b%2B 200");
    EXPECT_TRUE(provider.list("none", entries, &err)) << err;
    EXPECT_THAT(entries, SizeIs(0));
}

TEST_F(S3ProviderTest, SignsWithAutoWhereNoRegionIsSet) {
    BucketAccess access = accessTo(bucket);
    access.region.clear();
    access.endpoint += "/";
    S3Provider automatic(access);
    bucket.expectRegion("auto");
    EXPECT_TRUE(automatic.put("k", "x", &err)) << err;
    EXPECT_FALSE(provider.put("k", "x", &err));
}

TEST_F(S3ProviderTest, IsRefusedWithAnotherSecret) {
    BucketAccess access = accessTo(bucket);
    access.secretAccessKey += "x";
    S3Provider stranger(access);
    bucket.store("a/k", "x");
    std::string body = "kept";
    std::uint64_t size = 7;
    std::vector<ObjectEntry> entries{{"kept", 1}};
    EXPECT_FALSE(stranger.get("a/k", body, &err));
    EXPECT_EQ(err, "GET a/k -> HTTP 403");
    EXPECT_FALSE(stranger.put("a/k", "y", &err));
    EXPECT_EQ(err, "PUT a/k -> HTTP 403");
    EXPECT_FALSE(stranger.head("a/k", &size, &err));
    EXPECT_EQ(err, "HEAD a/k -> HTTP 403");
    EXPECT_FALSE(stranger.remove("a/k", &err));
    EXPECT_EQ(err, "DELETE a/k -> HTTP 403");
    EXPECT_FALSE(stranger.list("a/", entries, &err));
    EXPECT_EQ(err, "LIST -> HTTP 403 <Error><Code>SignatureDoesNotMatch</Code></Error>");
    EXPECT_FALSE(stranger.get("a/k", body, nullptr));
    EXPECT_EQ(body, "kept");
    EXPECT_EQ(size, 7u);
    EXPECT_THAT(entries, SizeIs(1));
    EXPECT_THAT(bucket.objects(), ElementsAre(Pair("a/k", "x")));
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
    const auto access = bucketAccessFrom(read);
    ASSERT_TRUE(access);
    EXPECT_THAT((std::vector{access->endpoint, access->region, access->bucket, access->accessKeyId,
                             access->secretAccessKey}),
                ElementsAre("https://h", "", "b", "k", "s"));
    variables["TIDE_S3_REGION"] = "eu";
    EXPECT_EQ(bucketAccessFrom(read)->region, "eu");
    for (const char* name :
         {"TIDE_S3_ENDPOINT", "TIDE_S3_BUCKET", "TIDE_S3_KEY", "TIDE_S3_SECRET"}) {
        const std::string value = std::exchange(variables[name], "");
        EXPECT_FALSE(bucketAccessFrom(read)) << name;
        variables[name] = value;
    }
}

TEST(BucketEnvironment, TellsWhatIsMissingWhenTheBucketIsNeeded) {
    unsetenv("TIDE_S3_SECRET");
    const auto provider = bucketFromEnvironment();
    std::string body = "kept";
    std::vector<ObjectEntry> entries;
    std::string errors[5];
    EXPECT_FALSE(provider->get("k", body, &errors[0]));
    EXPECT_FALSE(provider->put("k", "x", &errors[1]));
    EXPECT_FALSE(provider->head("k", nullptr, &errors[2]));
    EXPECT_FALSE(provider->list("", entries, &errors[3]));
    EXPECT_FALSE(provider->remove("k", &errors[4]));
    EXPECT_THAT(errors, ::testing::Each("no chunk URLs and no bucket credentials "
                                        "(TIDE_S3_ENDPOINT, TIDE_S3_BUCKET, TIDE_S3_KEY, "
                                        "TIDE_S3_SECRET)"));
    EXPECT_EQ(body, "kept");
}

}  // namespace
}  // namespace tide
