#include "tide/manifest/manifest.h"

#include <gmock/gmock.h>

#include <algorithm>

#include "support/fake_server.h"
#include "tide/tide_files.h"

namespace tide::testing {
namespace {

using quorvelle::testing::FakeServer;
using ::testing::ElementsAre;
using ::testing::FieldsAre;
using ::testing::IsEmpty;
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

    // What else is no good signature of a message is a seed of the fuzz target "manifest".
    struct Row {
        const char* name;
        PublicKeys key;
        std::string signature;
        std::string error;
    };
    for (const Row& row :
         {Row{"good", key, good, ""},
          {"upper case", upper(key), upper(good), ""},
          {"a changed signature", key, changed, "signature does not verify"},
          {"a newline after the signature", key, good + '\n', "bad signature"},
          {"no hexadecimal digits", key, std::string(128, 'g'), "bad signature"},
          {"blanks between", key, good.substr(0, 126) + " 0", "bad signature"},
          {"no key", "", good, "bad public key"},
          {"a key cut short", key.substr(2), good, "bad public key"},
          {"a newline after the key", key + '\n', good, "bad public key"},
          {"the second of two keys", keys({other, key}), good, ""},
          {"two other keys", keys({other, other}), good, "signature does not verify"},
          {"a bad key beside a good one", keys({key, "xx"}), good, "bad public key"},
          {"an empty key beside a good one", keys({key, ""}), good, "bad public key"},
          {"both bad", "xx", "xx", "bad public key"}}) {
        SCOPED_TRACE(row.name);
        std::string err;
        EXPECT_EQ(verifyEd25519(row.key, message, row.signature, &err), row.error.empty());
        EXPECT_EQ(err, row.error);
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

// What else is refused is a seed.
TEST_F(FetchManifestTest, SaysWhyItRefusesWhatItFetched) {
    for (const auto& [body, error] :
         {std::pair{R"({"schema": 1)", "manifest parse error: * Line 1, Column 13\n"},
          {"[1]", "unsupported manifest schema"},
          {R"({"schema": 1, "channel": "Beta"})", "manifest is for channel 'Beta', not 'beta'"},
          {R"({"schema": 1, "channel": {}})", kMalformedManifest}}) {
        storeSigned(body);
        EXPECT_THAT(verdict(""), StartsWith(error));
        EXPECT_THAT(verdict(signingKey()), StartsWith(error));
    }
    bucket.objects[kKey] = std::string(1 << 20, '[');
    EXPECT_THAT(verdict(""), StartsWith("manifest parse error: Exceeded stackLimit"));
    storeSigned(R"({"schema": 1})");
    EXPECT_EQ(verdict(""), "");
    EXPECT_EQ(verdict(signingKey()), "manifest names no channel but verification is required");
}

Json::Value listing(const std::string& files) {
    Json::Value manifest;
    EXPECT_TRUE(parseManifest(R"({"schema": 1, "files": )" + files + '}', manifest, nullptr));
    return manifest;
}

TEST(ManifestFiles, AreReadWithTheirChunksInOrder) {
    std::vector<ManifestFile> files;
    ASSERT_TRUE(readManifestFiles(listing(R"([
        {"path": "bin/übung.exe", "size": 18446744073709551615,
         "chunks": [{"h": "b", "n": 4294967297}, {"h": "a", "n": 1}, {"h": "b", "n": 4294967297}]},
        {"path": "a", "size": 0, "chunks": []}])"),
                                  files, nullptr));
    const auto large = FieldsAre("b", 4294967297U);
    EXPECT_THAT(files, ElementsAre(FieldsAre("bin/übung.exe", 18446744073709551615U,
                                             ElementsAre(large, FieldsAre("a", 1U), large)),
                                   FieldsAre("a", 0U, IsEmpty())));
}

// What else is refused is a seed.
TEST(ManifestFiles, AreRefusedWithAReason) {
    for (const auto& [list, error] :
         {std::pair{"[]", "manifest lists no files"},
          {R"([{"path": "a"}, {"path": "a"}])", "manifest lists the path twice: a"},
          {R"([{"path": "a"}, {"path": "a.part"}])", "manifest lists the path twice: a.part"},
          {R"([{"path": "d/a.part"}, {"path": "d/a"}])", "manifest lists the path twice: d/a.part"},
          {R"(["a"])", kMalformedManifest}}) {
        std::vector<ManifestFile> files{{"kept", 0, {}}};
        std::string err;
        EXPECT_FALSE(readManifestFiles(listing(list), files, &err));
        EXPECT_EQ(err, error);
        EXPECT_THAT(files, ElementsAre(FieldsAre("kept", 0U, IsEmpty())));
        EXPECT_FALSE(readManifestFiles(listing(list), files, nullptr));
    }
}

}  // namespace
}  // namespace tide::testing
