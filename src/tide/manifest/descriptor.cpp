#include "tide/manifest/descriptor.h"

#include <json/value.h>

#include <charconv>
#include <cstdint>
#include <utility>

#include "tide/error.h"
#include "tide/limits.h"
#include "tide/manifest/manifest.h"

namespace tide {

namespace {

ChunkUrls readChunkUrls(const Json::Value& chunks) {
    if (!chunks.isObject() && !chunks.isNull()) {
        Json::throwLogicError("chunks are no map");
    }
    ChunkUrls urls;
    for (auto at = chunks.begin(); at != chunks.end(); ++at) {
        urls.emplace_hint(urls.end(), at.name(), at->asString());
    }
    return urls;
}

// Servers send such numbers as texts, too.
std::int64_t wholeNumber(const Json::Value& value) {
    if (value.isNull() || value.isInt64()) {
        return value.asInt64();
    }
    const std::string text = value.isString() ? value.asString() : std::string();
    std::int64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (text.empty() || error != std::errc() || end != text.data() + text.size()) {
        Json::throwLogicError("no whole number");
    }
    return number;
}

std::string readBuild(const Json::Value& descriptor) {
    const Json::Value& build = descriptor["build"];
    if (!build.isString() && !build.isNull()) {
        return std::to_string(wholeNumber(build));
    }
    std::string id = build.asString();
    return id.empty() ? std::to_string(wholeNumber(descriptor["created"])) : id;
}

}  // namespace

bool parseSyncDescriptor(std::string_view json, SyncDescriptor& out, std::string* err) {
    Json::Value document;
    if (!parseManifest(json, document, err, kMaxDescriptorValues)) {
        return false;
    }
    try {
        const Json::Value& descriptor = document;
        out = {.manifestUrl = descriptor["manifest_url"].asString(),
               .signatureUrl = descriptor["manifest_sig_url"].asString(),
               .chunkUrls = readChunkUrls(descriptor["chunks"]),
               .build = readBuild(descriptor)};
        return true;
    } catch (const Json::Exception&) {
        return fail(err, kMalformedManifest);
    }
}

}  // namespace tide
