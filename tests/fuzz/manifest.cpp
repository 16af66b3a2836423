#include "tide/manifest/manifest.h"

#include <algorithm>
#include <filesystem>
#include <set>

#include "files/utf8_path.h"
#include "fuzz/promise.h"
#include "fuzz/targets.h"
#include "tide/tide_files.h"

namespace tide::fuzz {

namespace {

/// Of the signature in the seeds.
constexpr const char* kPublicKey =
    "24a3ac40d7bcfa22a641d187cd93298ea3cd287e30d248c58001e30cdf1ac830";
constexpr std::string_view kSigned = "signed ";

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

/// What is read entry by entry is what the text means as a whole.
void expectSameAsWhole(StorageProvider& bucket, const ManifestSource& source,
                       const std::vector<ManifestFile>& files, const std::string& err) {
    Json::Value manifest;
    std::vector<ManifestFile> whole;
    std::string reason = "untouched";
    if (fetchManifest(bucket, source, manifest, &reason)) {
        readManifestFiles(manifest, whole, &reason);
    }
    expect(reason == err, "one reason, in pieces and as a whole");
    const auto sameChunk = [](const ManifestChunk& left, const ManifestChunk& right) {
        return left.id == right.id && left.length == right.length;
    };
    expect(std::equal(files.begin(), files.end(), whole.begin(), whole.end(),
                      [&](const ManifestFile& left, const ManifestFile& right) {
                          return left.path == right.path && left.size == right.size &&
                                 std::equal(left.chunks.begin(), left.chunks.end(),
                                            right.chunks.begin(), right.chunks.end(), sameChunk);
                      }),
           "the same files, in pieces and as a whole");
}

}  // namespace

int runManifest(const std::uint8_t* bytes, std::size_t size) {
    testing::MemoryBucket bucket;
    std::string& text = bucket.objects[manifestKey("app")] = textOf(bytes, size);
    const bool isSigned = text.starts_with(kSigned);
    if (isSigned) {
        bucket.objects[manifestKey("app") + ".sig"] = takeLine(text).substr(kSigned.size());
    }
    const ManifestSource source{"app", std::string(isSigned ? kPublicKey : "")};
    std::vector<ManifestFile> files;
    std::string err = "untouched";
    const bool accepted = fetchManifestFiles(bucket, source, files, &err);
    expectReason(accepted, err, "");
    expectSameAsWhole(bucket, source, files, err);
    if (accepted) {
        expectSafeNames(files);
    } else {
        expect(files.empty(), "a refused manifest gives no files");
    }
    return accepted ? 1 : 0;
}

}  // namespace tide::fuzz
