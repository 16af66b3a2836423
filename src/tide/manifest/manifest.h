#pragma once

#include <json/value.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "tide/limits.h"
#include "tide/manifest/signature.h"
#include "tide/store/http.h"
#include "tide/store/storage_provider.h"

namespace tide {

/// The error text for a member of a manifest or descriptor that has another JSON type
/// than it must have.
inline constexpr const char* kMalformedManifest = "manifest parse error: malformed manifest";

/// Where the bucket keeps a channel's manifest. Its signature lies beside it, with
/// ".sig" appended to the key.
std::string manifestKey(const std::string& channel);

/// Parses JSON text. On failure `err`, unless null, is assigned "manifest parse error: "
/// and the reader's reasons, and `out` keeps what it held; so for a text of more than
/// `maxValues` values, which is not read. No exception leaves it.
bool parseManifest(std::string_view body, Json::Value& out, std::string* err,
                   std::size_t maxValues = kMaxManifestValues);

/// Where a channel's manifest comes from, and what it has to pass.
struct ManifestSource {
    std::string channel = {};
    /// Any makes a signature over the exact bytes and a "channel" in the manifest necessary;
    /// without one no signature is fetched.
    PublicKeys publicKeys = {};
    /// Fetched by plain GET; when it is empty, the object comes from the bucket.
    std::string manifestUrl = {};
    /// When it is empty, the signature comes from the bucket if the manifest does.
    std::string signatureUrl = {};
    /// Refuses an unsigned manifest that does not come over TLS, or is redirected away from
    /// it: whoever told the address was reached that way.
    bool httpsOnly = false;
};

/// Fetches a channel's manifest and lets it pass only when it is trustworthy: signed,
/// when a public key is given, of a known schema, and made for this channel. `out` is
/// assigned on success alone; its "files" are judged by readManifestFiles(). `connections`
/// is borrowed and may be null. Blocks the calling thread for the transfers.
bool fetchManifest(StorageProvider& provider, const ManifestSource& source, Json::Value& out,
                   std::string* err, ConnectionCache* connections = nullptr);

/// The same with the source's members one by one.
bool fetchManifest(StorageProvider& provider, const std::string& channel,
                   const std::string& manifestUrl, const PublicKeys& publicKeyHex,
                   const std::string& signatureUrl, Json::Value& out, std::string* err,
                   ConnectionCache* connections = nullptr);

/// A chunk as the manifest lists it.
struct ManifestChunk {
    /// The chunk id ("h"). Any text: one that is no id matches no bytes.
    std::string id;
    /// Length of the uncompressed bytes ("n"). Unbounded here: compare it with what is
    /// there before memory is taken for it.
    std::uint64_t length = 0;

    bool operator==(const ManifestChunk&) const = default;
};

/// A file as the manifest lists it: the concatenation of its chunks.
struct ManifestFile {
    /// Relative path, UTF-8, "/" between its parts; safe to join with a directory.
    std::string path;
    /// In bytes.
    std::uint64_t size = 0;
    std::vector<ManifestChunk> chunks;

    bool operator==(const ManifestFile&) const = default;
};

/// Reads "files" of a parsed manifest, in its order. The only way from a manifest to
/// paths: it refuses an empty list, unsafe paths, and paths that would overwrite each
/// other or another's ".part" file. On failure `err`, unless null, is assigned the
/// reason and `files` keeps what it held. No exception leaves it.
bool readManifestFiles(const Json::Value& manifest, std::vector<ManifestFile>& files,
                       std::string* err);

/// fetchManifest() and readManifestFiles() in one, with the same outcome and reasons, but
/// without a tree of all values: it takes little more memory than the manifest's text and the
/// files read from it.
bool fetchManifestFiles(StorageProvider& provider, const ManifestSource& source,
                        std::vector<ManifestFile>& files, std::string* err,
                        ConnectionCache* connections = nullptr);

}  // namespace tide
