#include "tide/store/s3_provider.h"

#include <gmock/gmock.h>

#include <atomic>

#include "support/fake_server.h"
#include "tide/store/bucket_environment.h"

namespace tide {

static void PrintTo(const ObjectEntry& entry, std::ostream* out) {
    *out << entry.key << " (" << entry.size << ')';
}

namespace {

using namespace quorvelle::testing;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

// What is asked for, and what is made of the answers. Whether the signatures are right is
// for the S3 server of others to judge, where objects are stored and removed as well.
class S3ProviderTest : public ::testing::Test {
protected:
    FakeServer server;
    S3Provider provider{{.endpoint = server.url().toStdString() + "/",
                         .region = "",
                         .bucket = "b b",
                         .accessKeyId = "key",
                         .secretAccessKey = "secret"}};
    std::string err;
};

TEST_F(S3ProviderTest, ReadsObjectsOfAnyName) {
    const std::pair<std::string, std::string> rows[] = {
        {"chunks/3f/3f9a", "chunks/3f/3f9a"},
        {"a b+c%20", "a%20b%2Bc%2520"},
        {"bêta/日本", "b%C3%AAta/%E6%97%A5%E6%9C%AC"},
        {"?#[]@!$&'()*,;=:", "%3F%23%5B%5D%40%21%24%26%27%28%29%2A%2C%3B%3D%3A"},
        {std::string("AZaz09-_.~\xff\1\0", 13), "AZaz09-_.~%FF%01%00"},
        {"up/../x/./y", "up/../x/./y"},
        {"a//b", "a//b"},
    };
    for (const auto& [key, target] : rows) {
        SCOPED_TRACE(key);
        server.onBytes("GET", "/b%20b/" + target, "\r\n%");
        server.onBytes("HEAD", "/b%20b/" + target, "\r\n%");
        std::string body = "old";
        EXPECT_TRUE(provider.get(key, body, &err)) << err;
        EXPECT_EQ(body, "\r\n%");
        std::uint64_t size = 0;
        EXPECT_TRUE(provider.head(key, &size, &err)) << err;
        EXPECT_EQ(size, 3U);
    }
    ASSERT_TRUE(provider.head("a//b", nullptr, nullptr));
    // Where no region is set.
    EXPECT_THAT(server.requests()[0].header("Authorization"), HasSubstr("/auto/s3/aws4_request"));
    EXPECT_EQ(provider.chunkKey("3f9a"), "chunks/3f/3f9a");
    EXPECT_EQ(provider.chunkKey(""), "chunks//");
}

TEST_F(S3ProviderTest, FailsWhereTheBucketLies) {
    std::atomic<std::size_t> sent = 0;
    const std::pair<FakeServer::Answer, std::string> rows[] = {
        {redirectTo("/elsewhere"), "GET chunks/aa -> HTTP 302"},
        {answering("", 500), "GET chunks/aa -> HTTP 500"},
        {[&sent](const auto&, auto& response) {
             const std::string block(1 << 20, 'x');
             response.set_chunked_content_provider(
                 "", [&sent, block](std::size_t offset, httplib::DataSink& sink) {
                     sent = offset;
                     return sink.write(block.data(), block.size());
                 });
         },
         "curl: Failed writing received data to disk/application"}};
    for (const auto& [answer, error] : rows) {
        server.on("GET", "/b%20b/chunks/aa", answer);
        std::string body = "kept";
        EXPECT_FALSE(provider.get("chunks/aa", body, &err));
        EXPECT_EQ(err, error);
        EXPECT_EQ(body, "kept");
    }
    // A chunk has 64 MiB at most; the rest is on its way.
    EXPECT_LT(sent, std::size_t{128} << 20);
}

TEST_F(S3ProviderTest, ListsPageAfterPageWhileTheNextIsNew) {
    const std::string first = "/b%20b?list-type=2&prefix=chunks%2Fa%20b";
    const std::string second =
        "/b%20b?continuation-token=1%2Fa%26b%2B%3D&list-type=2&prefix=chunks%2Fa%20b";
    server.onBytes("GET", first, R"(<?xml version="1.0" encoding="UTF-8"?>
<ListBucketResult xmlns="http://s3.amazonaws.com/doc/2006-03-01/">
  <Name>b</Name><IsTruncated>true</IsTruncated><ContinuationToken>old</ContinuationToken>
  <NextContinuationToken>1/a&amp;b+=</NextContinuationToken>
  <Contents>
    <Key>chunks/3f/3f9a</Key><LastModified>2024-02-29T12:34:56.000Z</LastModified>
    <Size>4294967296</Size><Owner><ID>x</ID></Owner>
  </Contents>
  <Contents><Size>0</Size><Key>b&#234;ta &lt;1&gt; &#x65E5;&#x1F600;</Key></Contents>
</ListBucketResult>)");
    server.onBytes("GET", second,
                   "<IsTruncated>false</IsTruncated><Contents><Size>1</Size></Contents>"
                   "<Contents><Key>&x;&#;&#x110000;&amp</Key><Size>-5</Size></Contents>");
    std::vector<ObjectEntry> entries;
    EXPECT_TRUE(provider.list("chunks/a b", entries, &err)) << err;
    EXPECT_THAT(entries, ElementsAre(ObjectEntry{"chunks/3f/3f9a", 4294967296},
                                     ObjectEntry{"bêta <1> 日😀", 0},
                                     ObjectEntry{"&x;&#;&#x110000;&amp", 0}));
    const std::string more = "<IsTruncated>true</IsTruncated>";
    for (const char* token : {"", "<NextContinuationToken>1/a&amp;b+=</NextContinuationToken>"}) {
        server.onBytes("GET", second, more + token);
        EXPECT_FALSE(provider.list("chunks/a b", entries, &err));
        EXPECT_EQ(err, "LIST -> HTTP 200 the page is truncated but names no next one");
        EXPECT_EQ(entries.size(), 3U);
    }
}

TEST(BucketEnvironment, NeedsEveryVariableButTheRegion) {
    for (const std::string missing : {"none", "REGION", "ENDPOINT", "BUCKET", "KEY", "SECRET"}) {
        SCOPED_TRACE(missing);
        const auto access = bucketAccessFrom([&missing](const std::string& name) {
            return name == "TIDE_S3_" + missing ? std::string() : name.substr(8);
        });
        ASSERT_EQ(access.has_value(), missing == "none" || missing == "REGION");
        if (access) {
            EXPECT_THAT((std::vector{access->endpoint, access->bucket, access->accessKeyId,
                                     access->secretAccessKey}),
                        ElementsAre("ENDPOINT", "BUCKET", "KEY", "SECRET"));
            EXPECT_EQ(access->region, missing == "none" ? "REGION" : "");
        }
    }
}

TEST(BucketEnvironment, NamesAHostAndNothingElse) {
    for (const auto& [given, endpoint] :
         {std::pair{"h.example:9000", "https://h.example:9000"}, {"http://h//", "http://h"}}) {
        EXPECT_EQ(bucketEndpoint(given), endpoint);
    }
    for (const auto& [given, shown] : {std::pair{"https://h/bucket", "https://h/bucket"},
                                       {"h?x=1", "h?x=1"},
                                       {"https://", "https://"},
                                       {"https://me:secret@h", "https://***@h"},
                                       {"me:sec@ret@h", "***@h"}}) {
        const auto bucket = bucketFrom([given = given](const char* name) {
            return std::string(name) == "TIDE_S3_ENDPOINT" ? given : "x";
        });
        std::string err;
        EXPECT_FALSE(bucket->put("key", "bytes", &err));
        EXPECT_EQ(err, std::string("bucket endpoint must be a host: ") + shown);
    }
}

}  // namespace
}  // namespace tide
