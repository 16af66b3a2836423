#include "tide/manifest/manifest.h"

#include <gmock/gmock.h>

#include <algorithm>

#include "support/fake_server.h"
#include "tide/manifest/signature.h"
#include "tide/tide_files.h"

namespace tide::testing {
namespace {

using quorvelle::testing::FakeServer;
using ::testing::ElementsAre;
using ::testing::StartsWith;

constexpr const char* kKey = "channels/beta/manifest.json";
constexpr const char* kGood = R"({"schema": 1, "channel": "beta", "files": []})";

TEST(SignatureTest, JudgesSignaturesMadeByOpenssl) {
    const auto vectorFile = [](const std::string& name) {
        return readFile(QUORVELLE_TEST_DATA "/signatures/" + name);
    };
    const auto upper = [](std::string text) {
        std::transform(text.begin(), text.end(), text.begin(), ::toupper);
        return text;
    };
    const std::string key = vectorFile("public_key.hex");
    const std::string message = vectorFile("message.json");
    const std::string good = vectorFile("signature.hex");
    ASSERT_EQ(good.size(), 128u);
    std::string changed = good;
    changed.front() = good.front() == '0' ? '1' : '0';

    const std::string other(64, '0');
    const auto keys = [](std::vector<std::string> all) { return PublicKeys(std::move(all)); };

    struct Row {
        const char* name;
        PublicKeys key;
        std::string message;
        std::string signature;
        const char* error;
    };
    const Row rows[] = {
        {"good", key, message, good, ""},
        {"upper case", upper(key), message, upper(good), ""},
        {"a changed byte", key, message + ' ', good, "signature does not verify"},
        {"a changed signature", key, message, changed, "signature does not verify"},
        {"a newline after the signature", key, message, good + '\n', "bad signature"},
        {"a signature cut short", key, message, good.substr(2), "bad signature"},
        {"no hexadecimal digits", key, message, std::string(128, 'g'), "bad signature"},
        {"blanks between", key, message, good.substr(0, 126) + " 0", "bad signature"},
        {"no key", "", message, good, "bad public key"},
        {"a key cut short", key.substr(2), message, good, "bad public key"},
        {"a newline after the key", key + '\n', message, good, "bad public key"},
        {"the second of two keys", keys({other, key}), message, good, ""},
        {"two other keys", keys({other, other}), message, good, "signature does not verify"},
        {"a bad key beside a good one", keys({key, "xx"}), message, good, "bad public key"},
        {"an empty key beside a good one", keys({key, ""}), message, good, "bad public key"},
        {"both bad", "xx", message, "xx", "bad public key"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        std::string err;
        EXPECT_EQ(verifyEd25519(row.key, row.message, row.signature, &err),
                  std::string(row.error).empty());
        EXPECT_EQ(err, row.error);
        EXPECT_EQ(verifyEd25519(row.key, row.message, row.signature, nullptr), err.empty());
    }
}

class FetchManifestTest : public ::testing::Test {
protected:
    void storeSigned(const std::string& body) {
        bucket.objects[kKey] = body;
        bucket.objects[kKey + std::string(".sig")] = signatureOf(body);
    }

    std::string url(const std::string& target) const { return server.url().toStdString() + target; }

    // What fetchManifest says; empty when it takes the manifest.
    std::string verdict(const std::string& publicKeyHex, const std::string& manifestUrl = {},
                        const std::string& signatureUrl = {}) {
        std::string err;
        manifest = "kept";
        const bool ok =
            fetchManifest(bucket, "beta", manifestUrl, publicKeyHex, signatureUrl, manifest, &err);
        EXPECT_EQ(ok, err.empty());
        EXPECT_EQ(manifest.isObject(), ok);
        return err;
    }

    FakeServer server;
    MemoryBucket bucket;
    Json::Value manifest;
};

TEST_F(FetchManifestTest, AsksForASignatureOnlyWithAKey) {
    storeSigned(kGood);
    EXPECT_EQ(verdict(signingKey()), "");
    EXPECT_EQ(manifest["channel"].asString(), "beta");
    EXPECT_EQ(verdict(""), "");
    EXPECT_THAT(bucket.asked, ElementsAre(kKey, kKey + std::string(".sig"), kKey));

    server.onBytes("GET", "/m", kGood);
    server.onBytes("GET", "/s", signatureOf(kGood));
    EXPECT_EQ(verdict(signingKey(), url("/m"), url("/s")), "");
    EXPECT_EQ(verdict("", url("/m"), url("/s")), "");
    EXPECT_THAT(server.lines(), ElementsAre("GET /m", "GET /s", "GET /m"));
    EXPECT_EQ(bucket.asked.size(), 3U);
}

TEST_F(FetchManifestTest, RefusesWhatCannotBeFetched) {
    EXPECT_EQ(verdict(""), "GET channels/beta/manifest.json -> HTTP 404");
    EXPECT_EQ(verdict("", "file:///etc/hostname"), "curl: Unsupported protocol");
    server.onJson("GET", "/m", {}, 500);
    EXPECT_EQ(verdict("", url("/m")), "manifest URL -> HTTP 500");
    server.forget();
    std::string err;
    EXPECT_FALSE(fetchManifest(
        bucket, {.channel = "beta", .manifestUrl = url("/m"), .httpsOnly = true}, manifest, &err));
    EXPECT_EQ(err, "manifest URL is not https");
    EXPECT_THAT(server.lines(), ::testing::IsEmpty());
    EXPECT_FALSE(fetchManifest(bucket, "beta", "", "", "", manifest, nullptr));
}

TEST_F(FetchManifestTest, RefusesWhatIsNotSignedByTheKey) {
    const std::string unsignedText = "channel 'beta' has no signature but verification is required";
    storeSigned(kGood);
    server.onBytes("GET", "/m", kGood);
    EXPECT_EQ(verdict(signingKey(), url("/m")), unsignedText);
    EXPECT_EQ(verdict(signingKey(), url("/m"), url("/nothing")), unsignedText);
    EXPECT_EQ(verdict(signingKey(), url("/m"), "file:///etc/hostname"), unsignedText);
    EXPECT_EQ(verdict("abc"), "bad public key");
    bucket.objects[kKey] = "{";
    EXPECT_EQ(verdict(signingKey()), "signature does not verify");
    bucket.objects.erase(kKey + std::string(".sig"));
    EXPECT_EQ(verdict(signingKey()), unsignedText);
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
        storeSigned(row.body);
        EXPECT_EQ(verdict(""), row.error);
        EXPECT_EQ(verdict(signingKey()), row.errorWithKey);
    }
}

TEST_F(FetchManifestTest, SaysWhereTheJsonIsBroken) {
    bucket.objects[kKey] = R"({"schema": 1)";
    EXPECT_THAT(verdict(""), StartsWith("manifest parse error: * Line 1, Column 13\n"));
    bucket.objects[kKey] = std::string(1 << 20, '[');
    EXPECT_THAT(verdict(""), StartsWith("manifest parse error: Exceeded stackLimit"));
}

}  // namespace
}  // namespace tide::testing
