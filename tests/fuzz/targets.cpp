#include "fuzz/targets.h"

#include <cstdio>
#include <cstdlib>

#include "tide/chunks/chunk_decode.h"
#include "tide/chunks/known_cuts.h"
#include "tide/limits.h"
#include "tide/manifest/descriptor.h"
#include "tide/manifest/manifest.h"
#include "tide/store/list_page.h"
#include "tide/tide_files.h"

namespace tide::fuzz {

namespace {

/// Ends the process, as a fuzzer notices it, unless the promise was kept.
void expect(bool kept, const char* promise) {
    if (!kept) {
        std::fprintf(stderr, "broken: %s\n", promise);
        std::abort();
    }
}

/// Checks what every function of the engine promises about its error text, given one that
/// was "untouched" before the call.
void expectReason(bool accepted, const std::string& err, const std::string& beginning) {
    expect(accepted == (err == "untouched"), "the reason is assigned on failure alone");
    expect(accepted || err.starts_with(beginning), "a refusal says what was refused");
}

/// Takes the first line off the text and returns it; all of it when there is only one.
std::string takeLine(std::string& text) {
    const std::size_t end = text.find('\n');
    std::string line = text.substr(0, end);
    text.erase(0, end == std::string::npos ? end : end + 1);
    return line;
}

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
    expect(files == whole, "the same files, in pieces and as a whole");
}

}  // namespace

bool runDescriptor(const std::string& json) {
    SyncDescriptor descriptor{.build = "untouched"};
    std::string err = "untouched";
    const bool accepted = parseSyncDescriptor(json, descriptor, &err);
    expectReason(accepted, err, "manifest parse error: ");
    expect(accepted || descriptor.build == "untouched", "a refused descriptor changes nothing");
    expect(!descriptor.build.empty(), "every build has an id");
    return accepted;
}

bool runManifest(const std::string& body) {
    testing::MemoryBucket bucket;
    std::string text = body;
    const bool isSigned = text.starts_with(kSigned);
    if (isSigned) {
        bucket.objects[manifestKey("app") + ".sig"] = takeLine(text).substr(kSigned.size());
    }
    bucket.objects[manifestKey("app")] = std::move(text);
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
    return accepted;
}

bool runChunk(const std::string& object) {
    std::string raw = object;
    const std::string id = takeLine(raw);
    std::string out = "untouched";
    std::string err = "untouched";
    const bool accepted = decodeChunk(raw, id, out, &err);
    expectReason(accepted, err, "chunk " + id + " failed to decode/verify");
    expect(accepted ? blake3Hex(out) == id && out.size() <= kMaxChunkBytes : out == "untouched",
           "only the bytes that the id names come out");

    // A digest cannot be guessed; the one of the stored bytes leads past it.
    std::string stored;
    expect(decodeChunk(raw, blake3Hex(raw), stored, nullptr) && stored == raw,
           "bytes may be stored as they are, whatever they look like");
    return accepted;
}

bool runKnownCuts(const std::string& list) {
    const std::string directory = "/games/app";
    expect(directoryOfCuts(list).size() <= list.size(), "a directory is no longer than its list");
    KnownCuts cuts;
    const bool read = decodeCuts(list, directory, cuts);
    expect(read || cuts.empty(), "a list that is refused leaves nothing behind");
    expect(!read || directoryOfCuts(list) == directory, "a list is that of its directory");
    std::size_t chunks = 0;
    for (const auto& [path, file] : cuts) {
        expect(path.size() <= list.size(), "a path is no longer than its list");
        chunks += file.chunks.size();
    }
    expect(chunks <= list.size() / 40, "a chunk takes its bytes");
    return read;
}

bool runListPage(const std::string& xml) {
    const ListPage page = parseListPage(xml);
    std::size_t text = 0;
    for (const ObjectEntry& entry : page.entries) {
        text += entry.key.size() + std::string_view("<Key></Key>").size();
    }
    expect(text <= xml.size() && page.nextToken.size() <= xml.size(),
           "a page holds no more than its text did");
    expect(page.truncated || page.nextToken.empty(), "a last page has no next one");
    return !page.entries.empty() || !page.nextToken.empty();
}

}  // namespace tide::fuzz
