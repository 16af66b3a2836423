#include <string>
#include <unordered_set>
#include <utility>

#include "files/safe_path.h"
#include "tide/error.h"
#include "tide/manifest/manifest.h"

namespace tide {

namespace {

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

// The names that the files of a manifest take in the target directory while it is
// assembled: each file's own and that of the ".part" file it is first written to.
class TakenNames {
public:
    // The name that was taken before, or an empty one.
    std::string take(const std::string& path) {
        for (const std::string& name : {path, path + ".part"}) {
            if (!names.insert(files::comparablePath(name)).second) {
                return name;
            }
        }
        return {};
    }

private:
    std::unordered_set<std::string> names;
};

bool readFiles(const Json::Value& list, std::vector<ManifestFile>& files, std::string* err) {
    TakenNames taken;
    files.reserve(list.size());
    for (const Json::Value& entry : list) {
        ManifestFile file{entry["path"].asString(), unsignedOf(entry["size"]),
                          readChunks(entry["chunks"])};
        if (!files::isSafeRelativePath(file.path)) {
            return fail(err, "manifest contains an unsafe path: ", file.path);
        }
        if (const std::string twice = taken.take(file.path); !twice.empty()) {
            return fail(err, "manifest lists the path twice: ", twice);
        }
        files.push_back(std::move(file));
    }
    return true;
}

}  // namespace

bool readManifestFiles(const Json::Value& manifest, std::vector<ManifestFile>& files,
                       std::string* err) {
    if (!manifest.isObject() || !manifest["files"].isArray() || manifest["files"].empty()) {
        return fail(err, "manifest lists no files");
    }
    std::vector<ManifestFile> read;
    try {
        if (!readFiles(manifest["files"], read, err)) {
            return false;
        }
    } catch (const Json::Exception&) {
        return fail(err, kMalformedManifest);
    }
    files = std::move(read);
    return true;
}

}  // namespace tide
