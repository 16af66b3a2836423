#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <unordered_map>
#include <vector>

#include "files/share_file.h"
#include "tide/chunks/chunk.h"

namespace tide {

/// How a file was cut when its stamp was the one given.
struct CutFile {
    files::FileStamp stamp = {};
    std::vector<Chunk> chunks = {};
};

/// Cuts by relative path (UTF-8, "/" between its parts).
using KnownCuts = std::unordered_map<std::string, CutFile>;

/// A regular file below a directory.
struct IndexedFile : CutFile {
    /// Relative, as in KnownCuts.
    std::string path = {};
    /// Every byte was read and hashed just now: `chunks` is no claim.
    bool isHashed = false;
    /// And nobody had it open for writing before that, when its stamp was taken.
    bool wasUnwritten = false;
};

/// What is worth asking for writers: smaller files are copied rather than shared.
inline constexpr std::uint64_t kMinLinkedBytes = std::uint64_t{64} << 10;

/// Every regular file below a directory, in the order of the walk; links are not followed.
/// Empty when there is no such directory. A file whose size and time are still those of
/// `known` takes its chunks from there; the others are read and cut, on up to `threads`
/// threads, the caller's among them; 0 means as many as the machine runs at once. The result
/// does not depend on their number. Each takes about 1 MiB. A file that cannot be read has no
/// chunks.
std::vector<IndexedFile> indexFiles(const std::filesystem::path& directory, KnownCuts known = {},
                                    unsigned threads = 0);

/// Adds the chunks of these files below `directory` that `wanted` asks for (an empty function
/// asks for all); a chunk that the index holds already keeps its place, and of several files
/// the first one wins.
void addToIndex(const std::filesystem::path& directory, const std::vector<IndexedFile>& files,
                LocalIndex& index, const std::function<bool(const std::string& id)>& wanted = {});

/// Both in one, with every file read.
void buildLocalIndex(const std::filesystem::path& directory, LocalIndex& index,
                     unsigned threads = 0);

}  // namespace tide
