#include <ctime>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>
#include <string_view>

#include "files/utf8_path.h"
#include "tide/chunks/chunker.h"
#include "tide/chunks/local_index.h"

/// One run of one function of the engine over what is on disk, for scripts that compare
/// it with other programs:
///   tide_time chunks FILE            cuts a file
///   tide_time index DIR THREADS      indexes a directory
/// prints how many chunks there were and the seconds that it took, by the clock and of the
/// processor.

namespace {

double processorSeconds() {
    return static_cast<double>(std::clock()) / CLOCKS_PER_SEC;
}

int report(const std::function<std::size_t()>& run) {
    const double processor = processorSeconds();
    const auto start = std::chrono::steady_clock::now();
    const std::size_t chunks = run();
    const std::chrono::duration<double> wall = std::chrono::steady_clock::now() - start;
    std::printf("%zu %.6f %.6f\n", chunks, wall.count(), processorSeconds() - processor);
    return chunks > 0 ? 0 : 2;
}

std::size_t countChunks(const char* file) {
    std::size_t chunks = 0;
    const bool whole = tide::chunkFile(
        files::utf8Path(file), {}, [&](const tide::Chunk&) { ++chunks; }, nullptr);
    return whole ? chunks : 0;
}

std::size_t countIndexed(const char* directory, unsigned threads) {
    tide::LocalIndex index;
    tide::buildLocalIndex(files::utf8Path(directory), index, threads);
    return index.size();
}

}  // namespace

int main(int count, char** words) {
    const std::string_view what = count > 1 ? words[1] : "";
    if (what == "chunks" && count == 3) {
        return report([&] { return countChunks(words[2]); });
    }
    if (what == "index" && count == 4) {
        const auto threads = static_cast<unsigned>(std::strtoul(words[3], nullptr, 10));
        return report([&] { return countIndexed(words[2], threads); });
    }
    std::fputs("usage: tide_time chunks FILE | index DIR THREADS\n", stderr);
    return 1;
}
