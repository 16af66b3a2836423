#include "tide/manifest/descriptor.h"

#include <json/value.h>

#include <utility>

#include "tide/error.h"
#include "tide/manifest/manifest.h"

namespace tide {

namespace {

ChunkUrls readChunkUrls(const Json::Value& chunks) {
    ChunkUrls urls;
    for (const std::string& id : chunks.getMemberNames()) {
        urls.emplace_hint(urls.end(), id, chunks[id].asString());
    }
    return urls;
}

template <typename T>
void assign(T* out, T value) {
    if (out != nullptr) {
        *out = std::move(value);
    }
}

}  // namespace

bool parseSyncDescriptor(const std::string& json, std::string* manifestUrl,
                         std::string* signatureUrl, ChunkUrls* chunkUrls, std::string* err) {
    Json::Value document;
    if (!parseManifest(json, document, err)) {
        return false;
    }
    try {
        const Json::Value& descriptor = document;
        std::string manifest = descriptor["manifest_url"].asString();
        std::string signature = descriptor["manifest_sig_url"].asString();
        ChunkUrls urls = readChunkUrls(descriptor["chunks"]);
        assign(manifestUrl, std::move(manifest));
        assign(signatureUrl, std::move(signature));
        assign(chunkUrls, std::move(urls));
        return true;
    } catch (const Json::Exception&) {
        return fail(err, kMalformedManifest);
    }
}

}  // namespace tide
