#include "support/s3_server.h"

#include <gmock/gmock.h>

#include "tide/store/list_page.h"
#include "tide/store/s3_provider.h"

namespace tide {
namespace {

using quorvelle::testing::S3Server;
using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::StartsWith;

// The engine against an S3 server that shares no code with it.
class S3ServerTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() { server = std::make_unique<S3Server>(); }
    static void TearDownTestSuite() { server.reset(); }

    void SetUp() override { ASSERT_NE(server->endpoint, "") << server->output; }

    static std::unique_ptr<S3Server> server;
    ConnectionCache connections;
    BucketAccess access{.endpoint = server->endpoint,
                        .region = "eu-west-1",
                        .bucket = S3Server::kBucket,
                        .accessKeyId = S3Server::kAccount,
                        .secretAccessKey = S3Server::kAccount};
    S3Provider provider{access, &connections};
    std::string err;
};

std::unique_ptr<S3Server> S3ServerTest::server;

TEST_F(S3ServerTest, StoresReadsAndRemovesObjectsOfAnyName) {
    std::string bytes("\0\r\n", 3);
    for (int i = 0; i < 300000; ++i) {
        bytes += static_cast<char>(i * 7);
    }
    for (const std::string key : {"any/plain", "any/a b", "any/a+b", "any/100%", "any/bêta 日本",
                                  "any/a%20b", "any/q?x=1#z"}) {
        SCOPED_TRACE(key);
        ASSERT_TRUE(provider.put(key, bytes, &err)) << err;
        std::string body;
        EXPECT_TRUE(provider.get(key, body, &err)) << err;
        EXPECT_EQ(body, bytes);
        std::uint64_t size = 0;
        EXPECT_TRUE(provider.head(key, &size, &err)) << err;
        EXPECT_EQ(size, bytes.size());
        std::vector<ObjectEntry> entries;
        EXPECT_TRUE(provider.list("any/", entries, &err)) << err;
        EXPECT_EQ(entries, (std::vector<ObjectEntry>{{key, bytes.size()}}));
        EXPECT_TRUE(provider.remove(key, &err)) << err;
        EXPECT_FALSE(provider.get(key, body, &err));
        EXPECT_EQ(err, "GET " + key + " -> HTTP 404");
        EXPECT_FALSE(provider.head(key, &size, &err));
        EXPECT_EQ(err, "HEAD " + key + " -> HTTP 404");
    }
}

// A page that is asked for as it is holds 1000 objects.
TEST_F(S3ServerTest, GoesOnWhereAPageEnds) {
    for (const char* key : {"many/a b+1", "many/a b+2"}) {
        ASSERT_TRUE(provider.put(key, "x", &err)) << err;
    }
    std::string query = "list-type=2&max-keys=1&prefix=many%2F";
    for (const std::string end : {"1", "2"}) {
        std::string body;
        long status = 0;
        ASSERT_TRUE(provider.request("GET", {}, query, {}, body, status, nullptr, &err)) << err;
        const ListPage page = parseListPage(body);
        EXPECT_EQ(page.entries, (std::vector<ObjectEntry>{{"many/a b+" + end, 1}})) << body;
        EXPECT_EQ(page.truncated, end == "1");
        query = listQuery("many/", page.nextToken);
    }
}

TEST_F(S3ServerTest, IsRefusedWithAnotherSecret) {
    ASSERT_TRUE(provider.put("a/k", "kept", &err)) << err;
    access.secretAccessKey += "x";
    S3Provider stranger(access);
    std::string body = "kept";
    std::vector<ObjectEntry> entries{{"kept", 1}};
    std::string errors[5];
    EXPECT_FALSE(stranger.get("a/k", body, &errors[0]));
    EXPECT_FALSE(stranger.put("a/k", "y", &errors[1]));
    EXPECT_FALSE(stranger.head("a/k", nullptr, &errors[2]));
    EXPECT_FALSE(stranger.remove("a/k", &errors[3]));
    EXPECT_FALSE(stranger.list("a/", entries, &errors[4]));
    EXPECT_THAT(errors, ElementsAre("GET a/k -> HTTP 403", "PUT a/k -> HTTP 403",
                                    "HEAD a/k -> HTTP 403", "DELETE a/k -> HTTP 403",
                                    AllOf(StartsWith("LIST -> HTTP 403 <"),
                                          HasSubstr("SignatureDoesNotMatch"))));
    EXPECT_EQ(body, "kept");
    EXPECT_EQ(entries, (std::vector<ObjectEntry>{{"kept", 1}}));
    EXPECT_TRUE(provider.get("a/k", body, &err)) << err;
    EXPECT_EQ(body, "kept");
    EXPECT_TRUE(provider.remove("a/k", &err)) << err;
}

}  // namespace
}  // namespace tide
