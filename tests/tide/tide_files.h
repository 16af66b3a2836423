#pragma once

#include <json/writer.h>
#include <sodium.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
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

    /// Every file below a folder, "/"-separated; folders that are empty with a "/" at the end.
    std::set<std::string> entries(const std::string& folder) const {
        std::set<std::string> found;
        for (const auto& entry : fs::recursive_directory_iterator(*this / folder)) {
            const std::u8string name =
                fs::relative(entry.path(), *this / folder).generic_u8string();
            const bool isFolder = entry.is_directory() && !entry.is_symlink();
            if (!isFolder || fs::is_empty(entry.path())) {
                found.insert(std::string(name.begin(), name.end()) + (isFolder ? "/" : ""));
            }
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
    for (const auto& [path, chunks] : build) {
        Json::Value& file = manifest["files"].append({});
        file["path"] = path;
        file["size"] = Json::UInt64{joined(chunks).size()};
        file["chunks"] = Json::arrayValue;
        for (const std::string& bytes : chunks) {
            Json::Value& chunk = file["chunks"].append({});
            chunk["h"] = blake3Hex(bytes);
            chunk["n"] = Json::UInt64{bytes.size()};
        }
    }
    return manifest;
}

/// The public key of what signatureOf() signs with.
inline std::string signingKey() {
    return "ea4a6c63e29c520abef5507b132ec5f9954776aebebe7b92421eea691446d22c";
}

inline std::string signatureOf(const std::string& message) {
    const std::vector<unsigned char> seed(crypto_sign_SEEDBYTES, 7);
    const std::vector<unsigned char> bytes(message.begin(), message.end());
    unsigned char open[crypto_sign_PUBLICKEYBYTES];
    unsigned char secret[crypto_sign_SECRETKEYBYTES];
    unsigned char signature[crypto_sign_BYTES];
    char text[2 * crypto_sign_BYTES + 1];
    crypto_sign_seed_keypair(open, secret, seed.data());
    crypto_sign_detached(signature, nullptr, bytes.data(), bytes.size(), secret);
    return sodium_bin2hex(text, sizeof text, signature, sizeof signature);
}

/// A bucket in memory that notes what was asked for.
class MemoryBucket : public StorageProvider {
public:
    void publish(const Build& build) {
        setManifest(manifestOf(build));
        for (const auto& [path, chunks] : build) {
            for (const std::string& bytes : chunks) {
                chunk(bytes) = bytes;
            }
        }
    }

    /// The object that a chunk of these bytes is fetched from.
    std::string& chunk(const std::string& bytes) { return objects[chunkKey(blake3Hex(bytes))]; }

    void setManifest(const Json::Value& manifest) {
        objects["channels/app/manifest.json"] =
            Json::writeString(Json::StreamWriterBuilder(), manifest);
    }

    bool get(const std::string& key, std::string& body, std::string* err) override {
        const bool isChunk = key.starts_with("chunks/");
        asked.push_back(key);
        if (!objects.contains(key) || (isChunk && fetched.size() >= breakAfter)) {
            return fail(err, "GET ", key, " -> HTTP 404");
        }
        body = objects[key];
        if (isChunk) {
            fetched.push_back(body.substr(0, 16));
        }
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
    /// How the chunks that were fetched begin.
    std::vector<std::string> fetched;
    /// Chunks that are served before every other is refused.
    std::size_t breakAfter = ~std::size_t{0};
};

}  // namespace tide::testing
