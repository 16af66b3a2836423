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
        for (const bool verdict : {true, false}) {
            const fs::path seeds =
                fs::path(QUORVELLE_FUZZ_SEEDS) / name / (verdict ? "accepted" : "refused");
            EXPECT_FALSE(fs::is_empty(seeds)) << seeds;
            for (const auto& seed : fs::directory_iterator(seeds)) {
                EXPECT_EQ(run(readFile(seed.path())), verdict) << seed.path();
            }
        }
    }
}

}  // namespace tide::testing
