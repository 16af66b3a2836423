#pragma once

#include <gmock/gmock.h>

#include "tide/assemble.h"
#include "tide/tide_files.h"

namespace tide::testing {

/// Runs of the assembly of channel "app" from a bucket in memory, in a fresh folder with
/// "staging" as the target and "install" as the directory to reuse.
class AssemblyTest : public ::testing::Test {
protected:
    /// Runs once; `err` then says why it failed, and is empty when it did not.
    bool assemble(const ChunkUrls& urls = {}) {
        err.clear();
        progress.clear();
        bucket.fetched.clear();
        const auto noteProgress = [&](std::uint64_t done, std::uint64_t all, std::int64_t bytes) {
            progress.push_back(std::to_string(done) + "/" + std::to_string(all) + " " +
                               std::to_string(bytes));
            if (onChunk) {
                onChunk(done);
            }
        };
        const bool ok = downloadAndAssemble(bucket,
                                            {.source = {.channel = "app"},
                                             .chunkUrls = urls,
                                             .targetDirectory = files::utf8Text(staging()),
                                             .reuseDirectory = files::utf8Text(temp / "install"),
                                             .known = [this] { return known; },
                                             .progress = noteProgress,
                                             .outcome = &outcome},
                                            &err);
        EXPECT_EQ(ok, err.empty());
        return ok;
    }

    /// Whether staging holds the build's files and nothing else.
    void expectAssembled(const Build& build) const {
        std::set<std::string> files;
        for (const auto& [path, chunks] : build) {
            EXPECT_TRUE(readFile(staging() / files::utf8Path(path)) == joined(chunks)) << path;
            for (std::size_t slash = path.find('/'); slash != std::string::npos;
                 slash = path.find('/', slash + 1)) {
                files.insert(path.substr(0, slash + 1));
            }
            files.insert(path);
        }
        EXPECT_EQ(temp.entries("staging"), files);
    }

    fs::path staging() const { return temp / "staging"; }

    TempDir temp;
    MemoryBucket bucket;
    std::string err;
    std::vector<std::string> progress;
    KnownCuts known;
    AssemblyOutcome outcome;
    /// Called on the worker after each chunk, with the number done.
    std::function<void(std::uint64_t)> onChunk;
};

/// Assembles a build whose file "large" has kChunks chunks.
class ResumeTest : public AssemblyTest {
protected:
    ResumeTest() {
        for (unsigned i = 0; i < kChunks; ++i) {
            build[1].second.push_back(randomBytes(i + 1, 40000 + 1000 * i));
        }
        bucket.publish(build);
    }

    static constexpr unsigned kChunks = 10;
    Build build = {{"small", {"s"}}, {"large", {}}, {"last", {"l"}}};
};

}  // namespace tide::testing
