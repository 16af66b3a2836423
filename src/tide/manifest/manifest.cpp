#include "tide/manifest/manifest.h"

#include <json/reader.h>

#include <algorithm>
#include <memory>
#include <optional>
#include <utility>

#include "tide/error.h"
#include "tide/manifest/manifest_file_list.h"
#include "tide/manifest/manifest_pieces.h"
#include "tide/manifest/signature.h"

namespace tide {

namespace {

bool fetchBody(StorageProvider& provider, const ManifestSource& source, const HttpOptions& options,
               std::string& body, std::string* err) {
    const std::string& url = source.manifestUrl;
    if (url.empty()) {
        return provider.get(manifestKey(source.channel), body, err);
    }
    if (options.httpsOnly && !url.starts_with("https://")) {
        return fail(err, "manifest URL is not https");
    }
    long status = 0;
    if (!httpGet(url, body, status, err, {}, options)) {
        return false;
    }
    return isSuccess(status) || fail(err, "manifest URL -> HTTP ", std::to_string(status));
}

bool fetchSignature(StorageProvider& provider, const ManifestSource& source,
                    const HttpOptions& options, std::string& signature) {
    if (!source.signatureUrl.empty()) {
        long status = 0;
        return httpGet(source.signatureUrl, signature, status, nullptr, {}, options) &&
               isSuccess(status);
    }
    return source.manifestUrl.empty() &&
           provider.get(manifestKey(source.channel) + ".sig", signature, nullptr);
}

bool checkChannel(const Json::Value& manifest, const std::string& channel, bool verified,
                  std::string* err) {
    if (!manifest.isMember("channel")) {
        return !verified || fail(err, "manifest names no channel but verification is required");
    }
    const std::string found = manifest["channel"].asString();
    return found == channel ||
           fail(err, "manifest is for channel '", found, "', not '", channel, "'");
}

bool checkManifest(const Json::Value& manifest, const std::string& channel, bool verified,
                   std::string* err) {
    // isInt() is also true of 1.0, and false of true and "1".
    if (!manifest.isObject() || !manifest["schema"].isInt() || manifest["schema"].asInt() != 1) {
        return fail(err, "unsupported manifest schema");
    }
    try {
        return checkChannel(manifest, channel, verified, err);
    } catch (const Json::Exception&) {
        return fail(err, kMalformedManifest);
    }
}

// An upper bound of the values in a JSON text. Those of its texts count as well: where a
// text begins is for the reader to say, which knows comments, too.
std::size_t countValues(std::string_view json) {
    return 1 + static_cast<std::size_t>(std::count_if(json.begin(), json.end(), [](char c) {
               return c == ',' || c == '[' || c == '{';
           }));
}

bool isVerified(const ManifestSource& source) {
    return !source.publicKeys.empty();
}

/// The manifest's text, vouched for where it has to be.
bool fetchText(StorageProvider& provider, const ManifestSource& source,
               ConnectionCache* connections, std::string& body, std::string* err) {
    const bool verified = isVerified(source);
    // A signature says more than the way that the bytes took.
    const HttpOptions options{.connections = connections,
                              .httpsOnly = source.httpsOnly && !verified};
    if (!fetchBody(provider, source, options, body, err)) {
        return false;
    }
    // Before anything is read from it: a parser is not for bytes that nobody vouches for.
    if (verified) {
        std::string signature;
        if (!fetchSignature(provider, source, options, signature)) {
            return fail(err, "channel '", source.channel,
                        "' has no signature but verification is required");
        }
        if (!verifyEd25519(source.publicKeys, body, signature, err)) {
            return false;
        }
    }
    return true;
}

/// Reads a text entry by entry; false where it has to be read as a whole, be it for the reason
/// why it is refused.
bool readInPieces(std::string_view text, Json::Value& head, ManifestFileList& list) {
    if (countValues(text) > kMaxManifestValues) {
        return false;
    }
    const std::optional<ManifestPieces> pieces = takeApart(text);
    if (!pieces || pieces->files.empty() || !parseManifest(pieces->head, head, nullptr)) {
        return false;
    }
    // An entry must be all of its piece, as it would have to be between two commas.
    Json::CharReaderBuilder builder;
    builder["failIfExtra"] = true;
    builder["strictRoot"] = true;
    builder["skipBom"] = false;
    const std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
    list.reserve(pieces->files.size());
    return std::all_of(pieces->files.begin(), pieces->files.end(), [&](std::string_view piece) {
        Json::Value entry;
        if (!reader->parse(piece.data(), piece.data() + piece.size(), &entry, nullptr)) {
            return false;
        }
        list.add(entry);
        return true;
    });
}

}  // namespace

std::string manifestKey(const std::string& channel) {
    return "channels/" + channel + "/manifest.json";
}

bool parseManifest(std::string_view body, Json::Value& out, std::string* err,
                   std::size_t maxValues) {
    if (countValues(body) > maxValues) {
        return fail(err, "manifest parse error: too many values");
    }
    const std::unique_ptr<Json::CharReader> reader(Json::CharReaderBuilder().newCharReader());
    Json::Value document;
    std::string reasons;
    try {
        if (!reader->parse(body.data(), body.data() + body.size(), &document, &reasons)) {
            return fail(err, "manifest parse error: ", reasons);
        }
    } catch (const Json::Exception& tooDeep) {
        return fail(err, "manifest parse error: ", tooDeep.what());
    }
    out = std::move(document);
    return true;
}

bool fetchManifest(StorageProvider& provider, const ManifestSource& source, Json::Value& out,
                   std::string* err, ConnectionCache* connections) {
    std::string body;
    Json::Value manifest;
    if (!fetchText(provider, source, connections, body, err) ||
        !parseManifest(body, manifest, err) ||
        !checkManifest(manifest, source.channel, isVerified(source), err)) {
        return false;
    }
    out = std::move(manifest);
    return true;
}

bool fetchManifestFiles(StorageProvider& provider, const ManifestSource& source,
                        std::vector<ManifestFile>& files, std::string* err,
                        ConnectionCache* connections) {
    std::string body;
    if (!fetchText(provider, source, connections, body, err)) {
        return false;
    }
    const bool verified = isVerified(source);
    Json::Value manifest;
    ManifestFileList list;
    if (readInPieces(body, manifest, list)) {
        return checkManifest(manifest, source.channel, verified, err) && list.take(files, err);
    }
    return parseManifest(body, manifest, err) &&
           checkManifest(manifest, source.channel, verified, err) &&
           readManifestFiles(manifest, files, err);
}

bool fetchManifest(StorageProvider& provider, const std::string& channel,
                   const std::string& manifestUrl, const PublicKeys& publicKeyHex,
                   const std::string& signatureUrl, Json::Value& out, std::string* err,
                   ConnectionCache* connections) {
    return fetchManifest(provider, {channel, publicKeyHex, manifestUrl, signatureUrl}, out, err,
                         connections);
}

}  // namespace tide
