#pragma once

#include <json/writer.h>
#include <sodium.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <map>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "files/utf8_path.h"
#include "tide/chunks/blake3_hash.h"
#include "tide/error.h"
#include "tide/store/storage_provider.h"

namespace tide::testing {

namespace fs = std::filesystem;

/// Consecutive SplitMix64 outputs from a seed as little-endian bytes, cut to size.
inline std::string randomBytes(std::uint64_t seed, std::size_t size) {
    std::string bytes;
    bytes.reserve(size + 8);
    while (bytes.size() < size) {
        seed += 0x9E3779B97F4A7C15;
        std::uint64_t z = (seed ^ (seed >> 30U)) * 0xBF58476D1CE4E5B9;
        z = (z ^ (z >> 27U)) * 0x94D049BB133111EB;
        z ^= z >> 31U;
        for (unsigned shift = 0; shift < 64; shift += 8) {
            bytes += static_cast<char>((z >> shift) & 255U);
        }
    }
    bytes.resize(size);
    return bytes;
}

inline void writeFile(const fs::path& path, const std::string& bytes) {
    fs::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary) << bytes;
}

inline std::string readFile(const fs::path& path) {
    std::ifstream stream(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

/// A new folder, removed with all it holds at the end.
class TempDir {
public:
    TempDir()
        : root(fs::temp_directory_path() / ("tide-test-" + std::to_string(std::random_device()()) +
                                            std::to_string(std::random_device()()))) {
        fs::create_directories(root);
    }
    ~TempDir() {
        std::error_code ignored;
        fs::remove_all(root, ignored);
    }
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    fs::path operator/(const std::string& relative) const {
        return root / files::utf8Path(relative);
    }

    std::string name() const { return root.filename().string(); }

    /// Every entry below a folder, "/"-separated, folders with a "/" at the end.
    std::set<std::string> entries(const std::string& folder) const {
        std::set<std::string> found;
        for (const auto& entry : fs::recursive_directory_iterator(*this / folder)) {
            const std::u8string text =
                fs::relative(entry.path(), *this / folder).generic_u8string();
            const std::string name(text.begin(), text.end());
            const bool directory = entry.is_directory() && !entry.is_symlink();
            found.insert(directory ? name + "/" : name);
        }
        return found;
    }

private:
    fs::path root;
};

/// The files of a build, each as the chunks it is put together from.
using Build = std::vector<std::pair<std::string, std::vector<std::string>>>;

inline std::string joined(const std::vector<std::string>& chunks) {
    std::string bytes;
    for (const std::string& chunk : chunks) {
        bytes += chunk;
    }
    return bytes;
}

inline Json::Value manifestOf(const Build& build, const std::string& channel = "app") {
    Json::Value manifest;
    manifest["schema"] = 1;
    manifest["channel"] = channel;
    manifest["files"] = Json::arrayValue;
    for (const auto& [path, chunks] : build) {
        Json::Value file;
        file["path"] = path;
        file["size"] = Json::UInt64{joined(chunks).size()};
        file["chunks"] = Json::arrayValue;
        for (const std::string& bytes : chunks) {
            Json::Value chunk;
            chunk["h"] = blake3Hex(bytes);
            chunk["n"] = Json::UInt64{bytes.size()};
            file["chunks"].append(chunk);
        }
        manifest["files"].append(file);
    }
    return manifest;
}

struct KeyPair {
    unsigned char open[crypto_sign_PUBLICKEYBYTES];
    unsigned char secret[crypto_sign_SECRETKEYBYTES];
};

/// The keys that tests sign with, always the same.
inline KeyPair keyPair() {
    const std::vector<unsigned char> seed(crypto_sign_SEEDBYTES, 7);
    KeyPair pair;
    crypto_sign_seed_keypair(pair.open, pair.secret, seed.data());
    return pair;
}

template <std::size_t kSize>
std::string hexOf(const unsigned char (&bytes)[kSize]) {
    char text[2 * kSize + 1];
    return sodium_bin2hex(text, sizeof text, bytes, kSize);
}

inline std::string signingKey() {
    return hexOf(keyPair().open);
}

inline std::string signatureOf(const std::string& message) {
    unsigned char signature[crypto_sign_BYTES];
    crypto_sign_detached(signature, nullptr, reinterpret_cast<const unsigned char*>(message.data()),
                         message.size(), keyPair().secret);
    return hexOf(signature);
}

/// A bucket in memory that notes what was asked for, and which chunks were fetched.
class MemoryBucket : public StorageProvider {
public:
    MemoryBucket() = default;
    explicit MemoryBucket(const Build& build) { publish(build); }

    void publish(const Build& build) {
        setManifest(manifestOf(build));
        for (const auto& [path, chunks] : build) {
            for (const std::string& bytes : chunks) {
                objects[chunkKey(blake3Hex(bytes))] = bytes;
            }
        }
    }

    void setManifest(const Json::Value& manifest) {
        objects["channels/app/manifest.json"] =
            Json::writeString(Json::StreamWriterBuilder(), manifest);
    }

    bool get(const std::string& key, std::string& body, std::string* err) override {
        const bool chunk = key.starts_with("chunks/");
        asked.push_back(key);
        if (!objects.contains(key) || (chunk && fetched.size() >= breakAfter)) {
            return fail(err, "GET ", key, " -> HTTP 404");
        }
        if (chunk) {
            fetched.push_back(key);
        }
        body = objects[key];
        return true;
    }
    bool put(const std::string&, const std::string&, std::string*) override { return false; }
    bool head(const std::string&, std::uint64_t*, std::string*) override { return false; }
    bool list(const std::string&, std::vector<ObjectEntry>&, std::string*) override {
        return false;
    }
    bool remove(const std::string&, std::string*) override { return false; }

    std::map<std::string, std::string> objects;
    std::vector<std::string> asked;
    std::vector<std::string> fetched;
    /// Chunks that are served before every other is refused.
    std::size_t breakAfter = ~std::size_t{0};
};

}  // namespace tide::testing
