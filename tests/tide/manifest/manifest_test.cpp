#include "tide/manifest/manifest.h"

#include <gmock/gmock.h>
#include <sodium.h>

#include "support/bucket_access.h"
#include "support/fake_server.h"

namespace tide {
namespace {

using namespace quorvelle::testing;
using ::testing::StartsWith;

constexpr const char* kKey = "channels/beta/manifest.json";
constexpr const char* kGood = R"({"schema": 1, "channel": "beta", "files": []})";

std::string hex(const unsigned char* bytes, std::size_t size) {
    std::string text(size * 2 + 1, '\0');
    sodium_bin2hex(text.data(), text.size(), bytes, size);
    text.pop_back();
    return text;
}

class FetchManifestTest : public ::testing::Test {
protected:
    FetchManifestTest() { crypto_sign_keypair(publicKey, secretKey); }

    std::string key() const { return hex(publicKey, sizeof publicKey); }

    void storeSigned(const std::string& object, const std::string& body) {
        unsigned char signature[crypto_sign_BYTES];
        crypto_sign_detached(signature, nullptr,
                             reinterpret_cast<const unsigned char*>(body.data()), body.size(),
                             secretKey);
        bucket.store(object, body);
        bucket.store(object + ".sig", hex(signature, sizeof signature));
    }

    // What fetchManifest says; empty when it takes the manifest.
    std::string verdict(const std::string& publicKeyHex, const std::string& manifestUrl = {},
                        const std::string& signatureUrl = {}) {
        S3Provider provider(accessTo(bucket));
        std::string err;
        manifest = "kept";
        const bool ok = fetchManifest(provider, "beta", manifestUrl, publicKeyHex, signatureUrl,
                                      manifest, &err);
        EXPECT_EQ(ok, err.empty());
        EXPECT_EQ(manifest.isObject(), ok);
        EXPECT_EQ(fetchManifest(provider, "beta", manifestUrl, publicKeyHex, signatureUrl, manifest,
                                nullptr),
                  ok);
        return err;
    }

    FakeBucket bucket;
    Json::Value manifest;
    unsigned char publicKey[crypto_sign_PUBLICKEYBYTES];
    unsigned char secretKey[crypto_sign_SECRETKEYBYTES];
};

TEST_F(FetchManifestTest, TakesManifestAndSignatureFromTheBucket) {
    storeSigned(kKey, kGood);
    EXPECT_EQ(verdict(key()), "");
    EXPECT_EQ(manifest["channel"].asString(), "beta");
    EXPECT_EQ(bucket.log()[0], "GET /tide%20test/channels/beta/manifest.json 200");
    EXPECT_EQ(bucket.log()[1], "GET /tide%20test/channels/beta/manifest.json.sig 200");
}

TEST_F(FetchManifestTest, TakesManifestAndSignatureFromUrls) {
    storeSigned("m", kGood);
    EXPECT_EQ(verdict(key(), bucket.presigned("m"), bucket.presigned("m.sig")), "");
    FakeServer elsewhere;
    elsewhere.on("GET", "/m", [this](const httplib::Request&, httplib::Response& response) {
        response.set_redirect(bucket.presigned("m"), 301);
    });
    EXPECT_EQ(verdict("", elsewhere.url().toStdString() + "/m"), "");
}

TEST_F(FetchManifestTest, AsksForNoSignatureWithoutAKey) {
    bucket.store("m", kGood);
    EXPECT_EQ(verdict("", bucket.presigned("m"), bucket.presigned("m.sig")), "");
    bucket.store(kKey, kGood);
    EXPECT_EQ(verdict(""), "");
    EXPECT_THAT(bucket.log(), ::testing::Each(::testing::Not(::testing::HasSubstr(".sig"))));
}

TEST_F(FetchManifestTest, RefusesWhatCannotBeFetched) {
    EXPECT_EQ(verdict(""), "GET channels/beta/manifest.json -> HTTP 404");
    EXPECT_EQ(verdict("", "file:///etc/hostname"), "curl: Unsupported protocol");
    bucket.store("m", kGood);
    bucket.lieAbout("m", Lie::kServerError);
    EXPECT_EQ(verdict("", bucket.presigned("m")), "manifest URL -> HTTP 500");
}

TEST_F(FetchManifestTest, RefusesWhatIsNotSignedByTheKey) {
    const std::string unsignedText = "channel 'beta' has no signature but verification is required";
    storeSigned(kKey, kGood);
    storeSigned("m", kGood);
    const std::string url = bucket.presigned("m");
    EXPECT_EQ(verdict(key(), url), unsignedText);
    EXPECT_EQ(verdict(key(), url, bucket.presigned("nothing.sig")), unsignedText);
    EXPECT_EQ(verdict(key(), url, "file:///etc/hostname"), unsignedText);
    bucket.store("m", kGood + std::string("\n"));
    EXPECT_EQ(verdict(key(), url, bucket.presigned("m.sig")), "signature does not verify");
    EXPECT_EQ(verdict("abc"), "bad public key");
    bucket.store("broken", "{");
    EXPECT_EQ(verdict(key(), bucket.presigned("broken"), bucket.presigned("m.sig")),
              "signature does not verify");
    bucket.store("line.sig", bucket.objects()["m.sig"] + '\n');
    EXPECT_EQ(verdict(key(), url, bucket.presigned("line.sig")), "bad signature");
    bucket.lieAbout(std::string(kKey) + ".sig", Lie::kForbidden);
    EXPECT_EQ(verdict(key()), unsignedText);
}

TEST_F(FetchManifestTest, JudgesSchemaAndChannel) {
    const std::string schema = "unsupported manifest schema";
    struct Row {
        const char* body;
        std::string error;
        std::string errorWithKey;
    };
    const Row rows[] = {
        {R"({"schema": 1})", "", "manifest names no channel but verification is required"},
        {R"({"schema": 1, "channel": "beta"})", "", ""},
        {R"({"channel": "beta"})", schema, schema},
        {R"({"schema": -1})", schema, schema},
        {R"({"schema": 4294967297})", schema, schema},
        {R"([1])", schema, schema},
        {R"({"schema": 1, "channel": "Beta"})", "manifest is for channel 'Beta', not 'beta'",
         "manifest is for channel 'Beta', not 'beta'"},
        {R"({"schema": 1, "channel": {}})", kMalformedManifest, kMalformedManifest},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.body);
        storeSigned(kKey, row.body);
        EXPECT_EQ(verdict(""), row.error);
        EXPECT_EQ(verdict(key()), row.errorWithKey);
    }
}

TEST(ParseManifest, RefusesWhatIsNoJson) {
    const std::pair<std::string, std::string> rows[] = {
        {R"({"schema": 1)", "manifest parse error: * Line 1, Column 13\n"},
        {"<html>", "manifest parse error: * Line 1, Column 1\n"},
        {std::string(1 << 20, '['), "manifest parse error: Exceeded stackLimit"},
    };
    for (const auto& [body, error] : rows) {
        Json::Value out = "kept";
        std::string err = "replaced";
        EXPECT_FALSE(parseManifest(body, out, &err));
        EXPECT_THAT(err, StartsWith(error));
        EXPECT_EQ(out, Json::Value("kept"));
    }
    EXPECT_EQ(manifestKey("a b"), "channels/a b/manifest.json");
}

}  // namespace
}  // namespace tide
