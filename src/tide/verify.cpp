#include "tide/verify.h"

#include <filesystem>
#include <optional>
#include <vector>

#include "files/disk.h"
#include "files/utf8_path.h"
#include "tide/chunk_reader.h"
#include "tide/manifest/manifest.h"

namespace tide {

namespace {

/// One file's verdict: an empty problem is a good file.
struct Verdict {
    std::string problem = {};
    std::uint64_t bytesChecked = 0;
};

Verdict hashFile(const std::filesystem::path& path, const ManifestFile& file) {
    Verdict verdict;
    ChunkReader reader(path);
    for (const ManifestChunk& chunk : file.chunks) {
        switch (reader.check(chunk, verdict.bytesChecked)) {
            case ChunkState::kMatches:
                verdict.bytesChecked += chunk.length;
                break;
            case ChunkState::kDiffers:
                verdict.problem = "chunk hash mismatch";
                return verdict;
            case ChunkState::kUnreadable:
                verdict.problem = reader.isInUse() ? kInUse : "truncated or unreadable";
                return verdict;
        }
    }
    return verdict;
}

Verdict checkFile(const std::filesystem::path& path, const ManifestFile& file, bool quick) {
    // The size first, in the full check too: it costs nothing and decides most of it.
    const std::optional<std::uint64_t> size = files::fileSize(path);
    if (!size) {
        return {"missing"};
    }
    if (size != file.size) {
        return {"size mismatch"};
    }
    return quick ? Verdict{{}, file.size} : hashFile(path, file);
}

}  // namespace

bool verifyFiles(const std::string& installDirectory, const Json::Value& manifest,
                 const CheckProgress& progress, const IssueCallback& issue, std::string* err,
                 bool quick) {
    std::vector<ManifestFile> files;
    if (!readManifestFiles(manifest, files, err)) {
        return false;
    }
    verifyFiles(installDirectory, files, progress, issue, quick);
    return true;
}

void verifyFiles(const std::string& installDirectory, const std::vector<ManifestFile>& files,
                 const CheckProgress& progress, const IssueCallback& issue, bool quick) {
    const std::filesystem::path directory = files::utf8Path(installDirectory);
    std::uint64_t done = 0;
    std::uint64_t bytes = 0;
    for (const ManifestFile& file : files) {
        const Verdict verdict = checkFile(directory / files::utf8Path(file.path), file, quick);
        if (!verdict.problem.empty() && issue) {
            issue(file.path, verdict.problem);
        }
        bytes += verdict.bytesChecked;
        if (progress) {
            progress(++done, files.size(), static_cast<std::int64_t>(bytes));
        }
    }
}

bool verifyInstall(StorageProvider& provider, const ManifestSource& source,
                   const std::string& installDirectory, const CheckProgress& progress,
                   const IssueCallback& issue, std::string* err, bool quick,
                   ConnectionCache* connections) {
    std::vector<ManifestFile> files;
    if (!fetchManifestFiles(provider, source, files, err, connections)) {
        return false;
    }
    verifyFiles(installDirectory, files, progress, issue, quick);
    return true;
}

bool verifyInstall(StorageProvider& provider, const std::string& channel,
                   const std::string& installDirectory, const PublicKeys& publicKeyHex,
                   const std::string& manifestUrl, const std::string& signatureUrl,
                   const CheckProgress& progress, const IssueCallback& issue, std::string* err,
                   bool quick) {
    ConnectionCache connections;
    return verifyInstall(provider, {channel, publicKeyHex, manifestUrl, signatureUrl},
                         installDirectory, progress, issue, err, quick, &connections);
}

}  // namespace tide
