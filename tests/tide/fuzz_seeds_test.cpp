#include <gtest/gtest.h>

#include "fuzz/targets.h"
#include "tide/tide_files.h"

namespace tide::testing {

// What the fuzzers start from and what they once found; the folder says the verdict.
TEST(FuzzSeeds, GetTheVerdictTheyAreFiledUnder) {
    const std::pair<const char*, fuzz::Target> targets[] = {{"chunk", &fuzz::runChunk},
                                                            {"descriptor", &fuzz::runDescriptor},
                                                            {"known_cuts", &fuzz::runKnownCuts},
                                                            {"list_page", &fuzz::runListPage},
                                                            {"manifest", &fuzz::runManifest}};
    for (const auto& [name, run] : targets) {
        for (const auto& [folder, verdict] : {std::pair{"accepted", 1}, {"refused", 0}}) {
            int seeds = 0;
            for (const auto& seed :
                 fs::directory_iterator(fs::path(QUORVELLE_FUZZ_SEEDS) / name / folder)) {
                SCOPED_TRACE(seed.path());
                const std::string bytes = readFile(seed.path());
                EXPECT_EQ(run(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()),
                          verdict);
                ++seeds;
            }
            EXPECT_GT(seeds, 0) << folder;
        }
    }
}

}  // namespace tide::testing
