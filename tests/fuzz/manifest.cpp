#include "tide/manifest/manifest.h"

#include <filesystem>
#include <set>

#include "files/utf8_path.h"
#include "fuzz/promise.h"
#include "fuzz/targets.h"
#include "tide/error.h"

namespace tide::fuzz {

namespace {

/// Of the signature in the seeds.
constexpr const char* kPublicKey =
    "24a3ac40d7bcfa22a641d187cd93298ea3cd287e30d248c58001e30cdf1ac830";
constexpr std::string_view kSigned = "signed ";

/// A bucket that holds a manifest and its signature and nothing else.
class ManifestBucket : public StorageProvider {
public:
    bool get(const std::string& key, std::string& body, std::string* err) override {
        const bool known = key == manifestKey("app") || key == manifestKey("app") + ".sig";
        if (known) {
            body = key.ends_with(".sig") ? signature : manifest;
        }
        return known || fail(err, "not there");
    }
    bool put(const std::string&, const std::string&, std::string*) override { return false; }
    bool head(const std::string&, std::uint64_t*, std::string*) override { return false; }
    bool list(const std::string&, std::vector<ObjectEntry>&, std::string*) override {
        return false;
    }
    bool remove(const std::string&, std::string*) override { return false; }

    std::string manifest;
    std::string signature;
};

void expectSafeNames(const std::vector<ManifestFile>& files) {
    const std::filesystem::path root = "/root";
    std::set<std::string> paths;
    for (const ManifestFile& file : files) {
        const std::filesystem::path joined = (root / files::utf8Path(file.path)).lexically_normal();
        expect(joined == files::utf8Path("/root/" + file.path),
               "a path names one place below the directory");
        expect(paths.insert(file.path).second, "paths are distinct");
    }
    for (const std::string& path : paths) {
        expect(!paths.contains(path + ".part"), "no file is another's part");
    }
    expect(!files.empty(), "an accepted manifest lists files");
}

}  // namespace

int runManifest(const std::uint8_t* bytes, std::size_t size) {
    ManifestBucket bucket;
    bucket.manifest = textOf(bytes, size);
    const bool isSigned = bucket.manifest.starts_with(kSigned);
    if (isSigned) {
        bucket.signature = takeLine(bucket.manifest).substr(kSigned.size());
    }
    Json::Value manifest;
    std::vector<ManifestFile> files;
    std::string err = "untouched";
    const bool accepted =
        fetchManifest(bucket, "app", "", isSigned ? kPublicKey : "", "", manifest, &err) &&
        readManifestFiles(manifest, files, &err);
    expectReason(accepted, err, "");
    if (accepted) {
        expectSafeNames(files);
    } else {
        expect(files.empty(), "a refused manifest gives no files");
    }
    return accepted ? 1 : 0;
}

}  // namespace tide::fuzz
