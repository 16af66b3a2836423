#include "tide/unchanged_files.h"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <optional>
#include <string_view>
#include <unordered_map>
#include <utility>

#include "files/disk.h"
#include "files/utf8_path.h"
#include "tide/chunk_reader.h"
#include "tide/part_file.h"
#include "tide/work_on_cores.h"

namespace tide {

namespace {

namespace fs = std::filesystem;

bool isCutLike(const IndexedFile& found, const ManifestFile& file) {
    return found.stamp.size == file.size &&
           std::equal(found.chunks.begin(), found.chunks.end(), file.chunks.begin(),
                      file.chunks.end(), [](const Chunk& left, const ManifestChunk& right) {
                          return left.id == right.id && left.length == right.length;
                      });
}

/// The files of a directory by their names, and by how they begin.
class Lookup {
public:
    explicit Lookup(const std::vector<IndexedFile>& files) {
        for (const IndexedFile& file : files) {
            byPath.emplace(file.path, &file);
            if (!file.chunks.empty()) {
                byFirstChunk.emplace(file.chunks.front().id, &file);
            }
        }
    }

    const IndexedFile* named(const std::string& path) const { return at(byPath, path); }

    /// A file that is cut like the one of the manifest, the one of its name before others.
    const IndexedFile* like(const ManifestFile& file) const {
        for (const IndexedFile* found :
             {named(file.path), at(byFirstChunk, file.chunks.front().id)}) {
            if (found != nullptr && isCutLike(*found, file)) {
                return found;
            }
        }
        return nullptr;
    }

private:
    using Map = std::unordered_map<std::string_view, const IndexedFile*>;

    static const IndexedFile* at(const Map& map, const std::string& key) {
        const auto found = map.find(key);
        return found == map.end() ? nullptr : found->second;
    }

    Map byPath;
    Map byFirstChunk;
};

/// A file of the manifest that stands elsewhere, and what becomes of it.
struct Takeover {
    std::size_t place = 0;
    const IndexedFile* from = nullptr;
    bool done = false;
    /// Of a second name.
    std::optional<files::FileStamp> shared = {};
};

/// Takes files over; called on several threads.
class Taker {
public:
    Taker(const std::vector<ManifestFile>& manifestFiles, const TargetTree& tree, fs::path from,
          bool mayLink)
        : files(manifestFiles), target(tree), source(std::move(from)), linking(mayLink) {}

    void take(Takeover& takeover) {
        const ManifestFile& file = files[takeover.place];
        const fs::path from = source / files::utf8Path(takeover.from->path);
        const fs::path part = target.part(file);
        if (files::entryKind(part) != files::EntryKind::kNothing) {
            return;  // What an interrupted run left may hold chunks.
        }
        const bool taken =
            clone(from, part, file) || link(from, part, file, takeover) || copy(from, part, file);
        takeover.done = taken && (!files::renameEntry(part, target.destination(file),
                                                      files::WhenInUse::kFail) ||
                                  giveUp(part));
    }

private:
    bool clone(const fs::path& from, const fs::path& part, const ManifestFile& file) {
        if (!cloning || !files::cloneFile(from, part)) {
            cloning = false;  // The two directories are not on one such file system.
            return false;
        }
        return holdsFile(part, file) || giveUp(part);
    }

    bool link(const fs::path& from, const fs::path& part, const ManifestFile& file,
              Takeover& takeover) const {
        if (!linking || file.size < kMinLinkedBytes) {
            return false;
        }
        // The bytes that were hashed to build the index need not be read once more.
        const bool isHashed = takeover.from->isHashed && takeover.from->wasUnwritten;
        const auto before =
            isHashed ? std::optional(takeover.from->stamp) : files::stampOfUnwritten(from);
        if (!before || !(isHashed || holdsFile(from, file)) || !files::linkFile(from, part)) {
            return false;
        }
        // Under the new name: another file may have taken the old one by now.
        if (files::stampOfUnwritten(part) != before) {
            return giveUp(part);
        }
        takeover.shared = before;
        return true;
    }

    static bool copy(const fs::path& from, const fs::path& part, const ManifestFile& file) {
        if (file.size >= kMinLinkedBytes) {
            return false;  // Chunks that must be written have their turn.
        }
        ChunkReader reader(from);
        PartFile to = PartFile::create(part);
        if (!to.isOpen()) {
            return false;
        }
        std::string bytes;
        for (const ManifestChunk& chunk : file.chunks) {
            if (!reader.read(chunk, to.size(), bytes) || !to.append(bytes)) {
                to.close();
                return giveUp(part);
            }
        }
        return to.close() || giveUp(part);
    }

    static bool giveUp(const fs::path& part) {
        files::removeTree(part);
        return false;
    }

    const std::vector<ManifestFile>& files;
    const TargetTree& target;
    const fs::path source;
    const bool linking;
    std::atomic<bool> cloning = true;
};

}  // namespace

UnchangedFiles takeUnchanged(const std::vector<ManifestFile>& files, const TargetTree& target,
                             const IndexedDirectory& staged, const IndexedDirectory& installed,
                             bool mayLink) {
    UnchangedFiles result{std::vector<bool>(files.size()), {}};
    const Lookup inTarget(staged.files);
    const Lookup elsewhere(installed.files);
    std::vector<Takeover> takeovers;
    for (std::size_t place = 0; place < files.size(); ++place) {
        const ManifestFile& file = files[place];
        if (file.chunks.empty()) {
            continue;
        }
        const IndexedFile* standing = inTarget.named(file.path);
        // A second name that an earlier run made is judged anew, by who writes into it now.
        const bool isOwn = standing != nullptr && files::isUnsharedFile(target.destination(file));
        const IndexedFile* from = isOwn ? nullptr : elsewhere.like(file);
        if (isOwn && standing->isHashed && isCutLike(*standing, file)) {
            result.inPlace[place] = true;
        } else if (from != nullptr && target.makeFolders(file)) {
            takeovers.push_back({place, from});
        }
    }
    Taker taker(files, target, installed.root, mayLink);
    orderForCores(takeovers, [&](const Takeover& takeover) { return files[takeover.place].size; });
    if (!takeovers.empty()) {
        // A small one finds out, alone, what the file system can.
        taker.take(takeovers.back());
        workOnCores(takeovers.size() - 1, [&](std::size_t at) { taker.take(takeovers[at]); });
    }
    for (const Takeover& takeover : takeovers) {
        result.inPlace[takeover.place] = takeover.done;
        if (takeover.done && takeover.shared) {
            result.shared.push_back({files[takeover.place].path, *takeover.shared});
        }
    }
    return result;
}

bool areUnwritten(const fs::path& target, const std::vector<SharedFile>& shared) {
    return std::all_of(shared.begin(), shared.end(), [&](const SharedFile& file) {
        return files::stampOfUnwritten(target / files::utf8Path(file.path)) == file.stamp;
    });
}

}  // namespace tide
