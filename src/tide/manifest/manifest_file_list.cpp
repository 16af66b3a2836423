#include "tide/manifest/manifest_file_list.h"

#include <utility>

#include "files/safe_path.h"
#include "tide/error.h"

namespace tide {

namespace {

constexpr const char* kPartSuffix = ".part";

// JsonCpp converts some numbers that do not fit without a word.
std::uint64_t unsignedOf(const Json::Value& value) {
    if (!value.isUInt64() && !value.isNull()) {
        Json::throwLogicError("no unsigned integer");
    }
    return value.asUInt64();
}

std::vector<ManifestChunk> readChunks(const Json::Value& list) {
    if (!list.isArray() && !list.isNull()) {
        Json::throwLogicError("chunks are no list");
    }
    std::vector<ManifestChunk> chunks;
    chunks.reserve(list.size());
    for (const Json::Value& entry : list) {
        chunks.push_back({entry["h"].asString(), unsignedOf(entry["n"])});
    }
    return chunks;
}

}  // namespace

void ManifestFileList::add(const Json::Value& entry) {
    if (!problem.empty()) {
        return;
    }
    try {
        read(entry);
    } catch (const Json::Exception&) {
        problem = kMalformedManifest;
    }
}

void ManifestFileList::read(const Json::Value& entry) {
    ManifestFile file{entry["path"].asString(), unsignedOf(entry["size"]),
                      readChunks(entry["chunks"])};
    if (!files::isSafeRelativePath(file.path)) {
        problem = "manifest contains an unsafe path: " + file.path;
    } else if (const std::string twice = nameTakenTwice(file.path); !twice.empty()) {
        problem = "manifest lists the path twice: " + twice;
    } else {
        files.push_back(std::move(file));
    }
}

/// While a directory is assembled, a file takes two names in it: its own, and that of the part
/// that it is first written to. Returns the one that was taken before, or an empty one.
std::string ManifestFileList::nameTakenTwice(const std::string& path) {
    const std::string part = path + kPartSuffix;
    std::string name = files::comparablePath(path);
    const bool isOwnTaken = isTaken(name);
    const bool isPartTaken = names.contains(files::comparablePath(part));
    names.insert(std::move(name));
    return isOwnTaken ? path : isPartTaken ? part : std::string();
}

bool ManifestFileList::isTaken(const std::string& name) const {
    const std::string suffix = files::comparablePath(kPartSuffix);
    return names.contains(name) ||
           (name.ends_with(suffix) && names.contains(name.substr(0, name.size() - suffix.size())));
}

bool ManifestFileList::take(std::vector<ManifestFile>& out, std::string* err) {
    if (!problem.empty()) {
        return fail(err, problem);
    }
    out = std::move(files);
    return true;
}

bool readManifestFiles(const Json::Value& manifest, std::vector<ManifestFile>& files,
                       std::string* err) {
    if (!manifest.isObject() || !manifest["files"].isArray() || manifest["files"].empty()) {
        return fail(err, "manifest lists no files");
    }
    ManifestFileList list;
    list.reserve(manifest["files"].size());
    for (const Json::Value& entry : manifest["files"]) {
        list.add(entry);
    }
    return list.take(files, err);
}

}  // namespace tide
