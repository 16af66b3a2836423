#include "tide/chunks/local_index.h"

#include <cstddef>
#include <cstdint>
#include <utility>

#include "files/disk.h"
#include "files/safe_path.h"
#include "files/utf8_path.h"
#include "tide/chunks/chunker.h"
#include "tide/work_on_cores.h"

namespace tide {

namespace {

void findFilesBelow(const std::filesystem::path& directory, const std::string& prefix,
                    std::vector<IndexedFile>& found) {
    for (const std::filesystem::path& entry : files::entriesOf(directory)) {
        const std::string name = files::utf8Text(entry.filename());
        // Windows would read another name, or a device, in the place of such a one; no build
        // has any.
        if (!files::isPlatformSafePath(name)) {
            continue;
        }
        std::string path = prefix + name;
        if (const auto stamp = files::stampOf(entry)) {
            found.push_back({{*stamp}, std::move(path)});
        } else if (files::entryKind(entry) == files::EntryKind::kDirectory) {
            findFilesBelow(entry, path + '/', found);
        }
    }
}

void cut(const std::filesystem::path& path, IndexedFile& file) {
    // What is small is not going to be shared, and asking costs as much as reading it.
    const auto unwritten =
        file.stamp.size >= kMinLinkedBytes ? files::stampOfUnwritten(path) : std::nullopt;
    if (unwritten) {
        file.stamp = *unwritten;
        file.wasUnwritten = true;
    }
    file.isHashed = chunkFile(
        path, ChunkerParameters{}, [&](const Chunk& chunk) { file.chunks.push_back(chunk); },
        nullptr);
    if (!file.isHashed) {
        file.chunks.clear();
    }
}

}  // namespace

std::vector<IndexedFile> indexFiles(const std::filesystem::path& directory, KnownCuts known,
                                    unsigned threads) {
    std::vector<IndexedFile> found;
    findFilesBelow(directory, {}, found);
    std::vector<std::size_t> unknown;
    for (std::size_t at = 0; at < found.size(); ++at) {
        const auto cutBefore = known.find(found[at].path);
        if (cutBefore != known.end() && cutBefore->second.stamp == found[at].stamp) {
            found[at].chunks = std::move(cutBefore->second.chunks);
        } else {
            unknown.push_back(at);
        }
    }
    orderForCores(unknown, [&](std::size_t at) { return found[at].stamp.size; });
    workOnCores(
        unknown.size(),
        [&](std::size_t at) {
            IndexedFile& file = found[unknown[at]];
            cut(directory / files::utf8Path(file.path), file);
        },
        threads);
    return found;
}

void addToIndex(const std::filesystem::path& directory, const std::vector<IndexedFile>& files,
                LocalIndex& index, const std::function<bool(const std::string& id)>& wanted) {
    for (const IndexedFile& file : files) {
        for (const Chunk& chunk : file.chunks) {
            if ((!wanted || wanted(chunk.id)) && !index.contains(chunk.id)) {
                index.emplace(chunk.id, ChunkRef{directory / files::utf8Path(file.path),
                                                 chunk.offset, chunk.length});
            }
        }
    }
}

void buildLocalIndex(const std::filesystem::path& directory, LocalIndex& index, unsigned threads) {
    addToIndex(directory, indexFiles(directory, {}, threads), index);
}

}  // namespace tide
