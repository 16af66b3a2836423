#pragma once

#include <gmock/gmock.h>

#include <functional>

#include "tide/assemble.h"
#include "tide/tide_files.h"

namespace tide::testing {

/// Runs of the assembly of channel "app" from a bucket in memory, in a fresh folder with
/// "staging" as the target and "install" as the directory to reuse.
class AssemblyTest : public ::testing::Test {
protected:
    /// Runs once and returns why it failed, nothing when it did not.
    std::string assemble(const ChunkUrls& urls = {}) {
        std::string err;
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
                                             .progress = noteProgress,
                                             .outcome = &outcome},
                                            &err);
        EXPECT_EQ(ok, err.empty());
        return err;
    }

    /// Publishes the build and runs once; staging then holds its files and nothing else.
    void expectAssembled(const Build& build) {
        bucket.publish(build);
        EXPECT_EQ(assemble(), "");
        expectStaged(build);
    }

    void expectStaged(const Build& build) const {
        std::set<std::string> files;
        for (const auto& [path, chunks] : build) {
            EXPECT_TRUE(readFile(staging() / files::utf8Path(path)) == joined(chunks)) << path;
            files.insert(path);
        }
        EXPECT_EQ(temp.entries("staging"), files);
    }

    fs::path staging() const { return temp / "staging"; }

    TempDir temp;
    MemoryBucket bucket;
    std::vector<std::string> progress;
    AssemblyOutcome outcome;
    /// Called on the worker after each chunk, with the number done.
    std::function<void(std::uint64_t)> onChunk;
};

}  // namespace tide::testing
