#include "tide/chunks/known_cuts.h"

#include "fuzz/promise.h"
#include "fuzz/targets.h"
#include "tide/chunks/blake3_hash.h"

namespace tide::fuzz {

int runKnownCuts(const std::uint8_t* bytes, std::size_t size) {
    const std::string list = textOf(bytes, size);
    const std::string directory = "/games/app";
    expect(directoryOfCuts(list).size() <= size, "a directory is no longer than its list");
    KnownCuts cuts;
    const bool read = decodeCuts(list, directory, cuts);
    expect(read || cuts.empty(), "a list that is refused leaves nothing behind");
    expect(!read || directoryOfCuts(list) == directory, "a list is that of its directory");
    std::size_t chunks = 0;
    for (const auto& [path, file] : cuts) {
        expect(path.size() <= size, "a path is no longer than its list");
        chunks += file.chunks.size();
    }
    expect(chunks <= size / 40, "a chunk takes its bytes");
    return read ? 1 : 0;
}

}  // namespace tide::fuzz
