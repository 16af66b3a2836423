#include "tide/manifest/signature.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <iterator>

namespace tide {
namespace {

std::string vectorFile(const std::string& name) {
    std::ifstream file(std::string(QUORVELLE_TEST_DATA "/signatures/") + name, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

std::string upper(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), ::toupper);
    return text;
}

TEST(Signature, JudgesSignaturesMadeByOpenssl) {
    const std::string key = vectorFile("public_key.hex");
    const std::string message = vectorFile("message.json");
    const std::string good = vectorFile("signature.hex");
    ASSERT_EQ(good.size(), 128u);
    std::string changed = good;
    changed.front() = good.front() == '0' ? '1' : '0';

    struct Row {
        const char* name;
        std::string key;
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

}  // namespace
}  // namespace tide
