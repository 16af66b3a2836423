#include "tide/chunks/local_index.h"

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <numeric>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include "files/disk.h"
#include "tide/chunks/chunker.h"

namespace tide {

namespace {

/// A file of the walk, and what one worker finds in it.
struct Candidate {
    std::filesystem::path file;
    std::uint64_t size = 0;
    std::vector<Chunk> chunks = {};
};

void findFilesBelow(const std::filesystem::path& directory, std::vector<Candidate>& found) {
    for (const std::filesystem::path& entry : files::entriesOf(directory)) {
        const files::EntryKind kind = files::entryKind(entry);
        if (kind == files::EntryKind::kDirectory) {
            findFilesBelow(entry, found);
        } else if (kind == files::EntryKind::kFile) {
            found.push_back(Candidate{entry, files::fileSize(entry).value_or(0)});
        }
    }
}

/// Places in the walk, large files first: a large one begun last would keep one thread
/// at work after all others have ended.
std::vector<std::size_t> orderOfWork(const std::vector<Candidate>& candidates) {
    std::vector<std::size_t> order(candidates.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::stable_sort(order.begin(), order.end(), [&](std::size_t left, std::size_t right) {
        return candidates[left].size > candidates[right].size;
    });
    return order;
}

void cut(Candidate& candidate) {
    const bool whole = chunkFile(
        candidate.file, ChunkerParameters{},
        [&](const Chunk& chunk) { candidate.chunks.push_back(chunk); }, nullptr);
    if (!whole) {
        candidate.chunks.clear();
    }
}

void cutAll(std::vector<Candidate>& candidates, unsigned threads) {
    const std::vector<std::size_t> order = orderOfWork(candidates);
    std::atomic<std::size_t> next = 0;
    const auto work = [&] {
        for (std::size_t at = next++; at < order.size(); at = next++) {
            cut(candidates[order[at]]);
        }
    };
    const std::size_t wanted = threads > 0 ? threads : std::thread::hardware_concurrency();
    std::vector<std::jthread> helpers;
    while (helpers.size() + 1 < std::min(wanted, candidates.size())) {
        try {
            helpers.emplace_back(work);
        } catch (const std::system_error&) {
            break;  // No thread to be had: those there are do all the work.
        }
    }
    work();
}

}  // namespace

void buildLocalIndex(const std::filesystem::path& directory, LocalIndex& index, unsigned threads) {
    std::vector<Candidate> candidates;
    findFilesBelow(directory, candidates);
    cutAll(candidates, threads);
    for (Candidate& candidate : candidates) {
        for (Chunk& chunk : candidate.chunks) {
            index.try_emplace(std::move(chunk.id),
                              ChunkRef{candidate.file, chunk.offset, chunk.length});
        }
    }
}

}  // namespace tide
