#include <benchmark/benchmark.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>

#include "tide/chunks/chunker.h"
#include "tide/chunks/local_index.h"

/// How fast the engine reads what is on disk already. The files are random bytes in a
/// folder below the temporary one, read once before they are measured, so the page cache
/// serves them.

namespace {

constexpr std::size_t kMiB = std::size_t{1} << 20;

/// A folder of `count` files of `size` bytes, removed at the end.
class RandomFiles {
public:
    RandomFiles(std::size_t count, std::size_t size) {
        std::mt19937_64 random(count);
        root = std::filesystem::temp_directory_path() /
               ("tide-bench-" + std::to_string(std::random_device()()));
        std::filesystem::create_directories(root);
        for (std::size_t i = 0; i < count; ++i) {
            std::ofstream file(fileAt(i), std::ios::binary);
            std::array<std::uint64_t, kMiB / 8> block{};
            for (std::size_t done = 0; done < size; done += kMiB) {
                for (std::uint64_t& word : block) {
                    word = random();
                }
                file.write(reinterpret_cast<const char*>(block.data()), kMiB);
            }
        }
    }
    ~RandomFiles() {
        std::error_code ignored;
        std::filesystem::remove_all(root, ignored);
    }
    RandomFiles(const RandomFiles&) = delete;
    RandomFiles& operator=(const RandomFiles&) = delete;

    const std::filesystem::path& folder() const { return root; }
    std::filesystem::path fileAt(std::size_t i) const { return root / std::to_string(i); }

private:
    std::filesystem::path root;
};

void setSpeed(benchmark::State& state, std::size_t bytes) {
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(bytes));
}

void chunkOneFile(benchmark::State& state, tide::CutScan scan) {
    const RandomFiles files(1, 1024 * kMiB);
    while (state.KeepRunning()) {
        std::size_t chunks = 0;
        const bool whole = tide::chunkFile(
            files.fileAt(0), {}, [&](const tide::Chunk&) { ++chunks; }, nullptr, scan);
        if (!whole || chunks == 0) {
            state.SkipWithError("the file could not be cut");
        }
    }
    setSpeed(state, 1024 * kMiB);
}

void indexFolder(benchmark::State& state) {
    const RandomFiles files(32, 32 * kMiB);
    while (state.KeepRunning()) {
        tide::LocalIndex index;
        tide::buildLocalIndex(files.folder(), index, static_cast<unsigned>(state.range(0)));
        if (index.empty()) {
            state.SkipWithError("the folder could not be indexed");
        }
    }
    setSpeed(state, 1024 * kMiB);
}

BENCHMARK_CAPTURE(chunkOneFile, in_lanes, &tide::scanInLanes)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK_CAPTURE(chunkOneFile, byte_by_byte, &tide::scanByteByByte)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK(indexFolder)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
