#include "tide/assemble.h"

#include <algorithm>
#include <filesystem>
#include <numeric>
#include <optional>
#include <string_view>
#include <unordered_set>
#include <utility>
#include <vector>

#include "files/disk.h"
#include "files/utf8_path.h"
#include "tide/chunk_reader.h"
#include "tide/chunk_source.h"
#include "tide/chunks/known_cuts.h"
#include "tide/chunks/local_index.h"
#include "tide/error.h"
#include "tide/manifest/manifest.h"
#include "tide/part_file.h"
#include "tide/target_tree.h"
#include "tide/unchanged_files.h"

namespace tide {

namespace {

namespace fs = std::filesystem;

/// What the caller of a run is told, and how stubborn it is.
struct RunOptions {
    const AssemblyProgress& progress;
    const InUseCallback& inUse;
    int maxReplaceAttempts;
    /// Nothing stood in the target, so that nothing can be in the way of a file.
    bool isFresh;
};

/// One run over the files of a manifest.
class Assembly {
public:
    Assembly(const std::vector<ManifestFile>& manifestFiles, const std::vector<bool>& takenOver,
             const TargetTree& targetTree, fs::path reuseDirectory, ChunkSource& chunkSource,
             RunOptions runOptions)
        : files(manifestFiles),
          inPlace(takenOver),
          target(targetTree),
          reuse(std::move(reuseDirectory)),
          source(chunkSource),
          options(runOptions),
          chunksInAll(std::accumulate(
              files.begin(), files.end(), std::uint64_t{0},
              [](std::uint64_t sum, const auto& file) { return sum + file.chunks.size(); })) {}

    bool run(std::string* err) {
        for (std::size_t place = 0; place < files.size(); ++place) {
            if (inPlace[place]) {
                reportAll(files[place]);
            } else if (!assemble(files[place], err)) {
                return false;
            }
        }
        // Strays go last: until the end their bytes may be the only place of a chunk.
        return target.removeStrays(err);
    }

private:
    bool assemble(const ManifestFile& file, std::string* err) {
        const fs::path part = target.part(file);
        if (!(options.isFresh ? target.makeFolders(file) : target.makeWay(file))) {
            return fail(err, "cannot open ", files::utf8Text(part));
        }
        const fs::path destination = target.destination(file);
        if (stands(destination, file)) {
            reportAll(file);
        } else if (!write(file, part, destination, err) ||
                   !replaceFile(part, destination, options.maxReplaceAttempts, options.inUse,
                                sleepFor, err)) {
            return false;
        }
        // Only now: under the name of the part the chunks would be looked for in vain.
        source.fileWritten(destination, file);
        return true;
    }

    /// Hashed, however it got there: nothing says that what an interrupted run left still is
    /// what it was when it was written.
    bool stands(const fs::path& destination, const ManifestFile& file) const {
        return !options.isFresh && files::isUnsharedFile(destination) &&
               holdsFile(destination, file);
    }

    bool write(const ManifestFile& file, const fs::path& part, const fs::path& destination,
               std::string* err) {
        const LeadingChunks kept = options.isFresh ? LeadingChunks() : resumable(file);
        // Where the bytes may stand at the same offset although the index has another cut of
        // them: publishers may have cut with other parameters.
        std::vector<fs::path> seeds;
        const auto addSeed = [&](const fs::path& seed) {
            if (files::fileSize(seed)) {
                seeds.push_back(seed);
            }
        };
        if (!options.isFresh) {
            addSeed(destination);
        }
        if (!reuse.empty()) {
            addSeed(reuse / files::utf8Path(file.path));
        }
        if (!options.isFresh && kept.count == 0) {
            addSeed(keepLeftover(file));
        }
        PartFile written =
            kept.count > 0 ? PartFile::resume(part, kept.bytes) : PartFile::create(part);
        if (!written.isOpen()) {
            return fail(err, "cannot open ", files::utf8Text(part));
        }
        std::for_each_n(file.chunks.begin(), kept.count,
                        [this](const auto& chunk) { report(chunk); });
        return append(file, kept.count, seeds, written, err) && finish(file, written, err);
    }

    bool append(const ManifestFile& file, std::size_t begin, const std::vector<fs::path>& seeds,
                PartFile& part, std::string* err) {
        for (std::size_t i = begin; i < file.chunks.size(); ++i) {
            std::string_view bytes;
            if (!source.find(file.chunks[i], part.size(), seeds, bytes, err)) {
                return false;
            }
            if (i + 1 < file.chunks.size()) {
                source.expect(file.chunks[i + 1]);
            }
            if (!part.append(bytes)) {
                return fail(err, "write failed for ", files::utf8Text(target.destination(file)));
            }
            report(file.chunks[i]);
        }
        return true;
    }

    bool finish(const ManifestFile& file, PartFile& part, std::string* err) {
        if (!part.close()) {
            return fail(err, "write failed for ", files::utf8Text(target.destination(file)));
        }
        // Every chunk was right; this is about the list of them.
        return part.size() == file.size ||
               fail(err, "size mismatch for ", files::utf8Text(target.destination(file)));
    }

    /// How much of a leftover part can stay where it is: all but a torn last chunk.
    /// Nothing when it is more than that, since what would be overwritten may hold
    /// chunks, or when writing into it would write into another file.
    LeadingChunks resumable(const ManifestFile& file) const {
        const fs::path part = target.part(file);
        if (!files::isUnsharedFile(part)) {
            return {};
        }
        const LeadingChunks leading = leadingChunks(part, file.chunks);
        const std::uint64_t size = files::fileSize(part).value_or(0);
        const bool torn = leading.count < file.chunks.size() && size > leading.bytes &&
                          size - leading.bytes < file.chunks[leading.count].length;
        return torn || size == leading.bytes ? leading : LeadingChunks{};
    }

    /// Moves a leftover part out of the way, so that its name is free and its chunks
    /// still serve. Returns its new name; empty when there was none.
    fs::path keepLeftover(const ManifestFile& file) {
        const fs::path part = target.part(file);
        if (files::entryKind(part) == files::EntryKind::kNothing) {
            return {};
        }
        fs::path aside = target.setAside(part);
        source.fileMoved(part, aside);
        return aside;
    }

    void reportAll(const ManifestFile& file) {
        for (const ManifestChunk& chunk : file.chunks) {
            report(chunk);
        }
    }

    void report(const ManifestChunk& chunk) {
        source.markUsed(chunk);
        ++chunksDone;
        bytesDone += chunk.length;
        if (options.progress) {
            options.progress(chunksDone, chunksInAll, static_cast<std::int64_t>(bytesDone));
        }
    }

    const std::vector<ManifestFile>& files;
    const std::vector<bool>& inPlace;
    const TargetTree& target;
    const fs::path reuse;
    ChunkSource& source;
    const RunOptions options;
    const std::uint64_t chunksInAll;
    std::uint64_t chunksDone = 0;
    std::uint64_t bytesDone = 0;
};

std::uint64_t sumUpTo64Bits(std::uint64_t left, std::uint64_t right) {
    return left + std::min(right, ~left);
}

/// Bytes that have to be written for the files that are not in place yet, less what an
/// interrupted run wrote of them.
std::uint64_t bytesToWrite(const std::vector<ManifestFile>& files, const UnchangedFiles& unchanged,
                           const TargetTree& target, bool isResumed) {
    std::uint64_t sum = 0;
    for (std::size_t place = 0; place < files.size(); ++place) {
        const ManifestFile& file = files[place];
        if (unchanged.inPlace[place]) {
            continue;
        }
        std::uint64_t written = 0;
        if (isResumed) {
            written = std::max(files::fileSize(target.part(file)).value_or(0),
                               files::fileSize(target.destination(file)).value_or(0));
        }
        sum = sumUpTo64Bits(sum, file.size - std::min(file.size, written));
    }
    return sum;
}

/// Whether so many bytes fit beside the target, as far as that can be known.
bool hasRoom(const fs::path& target, std::uint64_t bytes, AssemblyOutcome& outcome,
             std::string* err) {
    constexpr std::uint64_t kMegabyte = 1048576;
    std::optional<std::uint64_t> free = files::freeSpace(target);
    if (!free) {
        // It may not have been made yet.
        free = files::freeSpace(target.parent_path());
    }
    if (free && bytes > *free) {
        outcome.lacksSpace = true;
        return fail(err, "not enough disk space (",
                    std::to_string(bytes / kMegabyte + (bytes % kMegabyte > 0 ? 1 : 0)),
                    " MB needed, ", std::to_string(*free / kMegabyte), " MB free)");
    }
    return true;
}

/// The chunks on this machine that the files not yet in place ask for.
LocalIndex indexOfWanted(const std::vector<ManifestFile>& files, const std::vector<bool>& inPlace,
                         const IndexedDirectory& staged, const IndexedDirectory& installed) {
    std::unordered_set<std::string_view> wanted;
    for (std::size_t place = 0; place < files.size(); ++place) {
        for (const ManifestChunk& chunk : files[place].chunks) {
            if (!inPlace[place]) {
                wanted.insert(chunk.id);
            }
        }
    }
    LocalIndex index;
    // What an interrupted run left comes first: its chunks are already where they belong.
    for (const IndexedDirectory* directory : {&staged, &installed}) {
        addToIndex(directory->root, directory->files, index,
                   [&](const std::string& id) { return wanted.contains(id); });
    }
    return index;
}

}  // namespace

bool downloadAndAssemble(StorageProvider& provider, const AssemblyJob& job, std::string* err) {
    ConnectionCache own;
    ConnectionCache& connections = job.connections != nullptr ? *job.connections : own;
    std::vector<ManifestFile> files;
    if (!fetchManifestFiles(provider, job.source, files, err, &connections)) {
        return false;
    }
    if (job.onSize) {
        job.onSize(std::accumulate(
            files.begin(), files.end(), std::uint64_t{0},
            [](std::uint64_t sum, const ManifestFile& file) { return sum + file.size; }));
    }
    const TargetTree target(files::utf8Path(job.targetDirectory), files);
    const fs::path reuse = files::utf8Path(job.reuseDirectory);
    AssemblyOutcome unwanted;
    AssemblyOutcome& outcome = job.outcome != nullptr ? *job.outcome : unwanted;
    UnchangedFiles unchanged;
    LocalIndex index;
    const bool isFresh = files::entryKind(target.root()) == files::EntryKind::kNothing ||
                         files::isEmptyDirectory(target.root());
    {
        const IndexedDirectory staged{target.root(), indexFiles(target.root())};
        const IndexedDirectory installed{
            reuse, reuse.empty() ? std::vector<IndexedFile>()
                                 : indexFiles(reuse, job.known ? job.known() : KnownCuts())};
        unchanged = takeUnchanged(files, target, staged, installed, job.mayLink);
        if (!hasRoom(target.root(), bytesToWrite(files, unchanged, target, !staged.files.empty()),
                     outcome, err)) {
            return false;
        }
        index = indexOfWanted(files, unchanged.inPlace, staged, installed);
    }
    outcome.shared = std::move(unchanged.shared);
    ChunkSource source(provider, job.chunkUrls, connections, std::move(index), files);
    const RunOptions options{job.progress, job.inUse, job.maxReplaceAttempts, isFresh};
    if (!Assembly(files, unchanged.inPlace, target, reuse, source, options).run(err)) {
        return false;
    }
    if (job.outcome != nullptr && !reuse.empty()) {
        outcome.cuts = encodeCuts(job.reuseDirectory, target.root(), files);
    }
    return true;
}

bool downloadAndAssemble(StorageProvider& provider, const std::string& channel,
                         const std::string& targetDirectory, const PublicKeys& publicKeyHex,
                         const std::string& manifestUrl, const std::string& signatureUrl,
                         const ChunkUrls& chunkUrls, const AssemblyProgress& progress,
                         const InUseCallback& inUse, int maxReplaceAttempts,
                         const std::string& reuseDirectory, std::string* err) {
    return downloadAndAssemble(provider,
                               {.source = {channel, publicKeyHex, manifestUrl, signatureUrl},
                                .chunkUrls = chunkUrls,
                                .targetDirectory = targetDirectory,
                                .reuseDirectory = reuseDirectory,
                                .progress = progress,
                                .inUse = inUse,
                                .maxReplaceAttempts = maxReplaceAttempts},
                               err);
}

}  // namespace tide
