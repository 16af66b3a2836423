#pragma once

#include <future>
#include <string>

#include "tide/chunks/local_index.h"
#include "tide/manifest/manifest.h"

namespace tide {

/// Reads one chunk of a file of this machine, and hashes it, on a thread of its own while the
/// bytes of the chunk before it are written. It is used on one thread. Where no thread can be
/// had, nothing is read ahead, and everything takes longer.
class ReadAhead {
public:
    /// Begins with a chunk. Waits for one that was begun before and thrown away.
    void begin(const ManifestChunk& chunk, const ChunkRef& place);

    /// Whether it was this chunk that was begun, and its bytes are those of its id: then they
    /// are in `bytes`, which is left alone otherwise. The next one can be begun in any case.
    bool take(const ManifestChunk& chunk, std::string& bytes);

private:
    /// Before `reading`, whose end is waited for when it is destroyed.
    std::string buffer;
    std::string id;
    std::future<bool> reading;
};

}  // namespace tide
