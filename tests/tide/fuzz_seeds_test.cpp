#include <gtest/gtest.h>

#include "fuzz/targets.h"
#include "tide_files.h"

namespace tide::testing {
namespace {

struct FuzzTarget {
    const char* name;
    fuzz::Target run;
};

void PrintTo(const FuzzTarget& row, std::ostream* out) {
    *out << row.name;
}

class FuzzSeeds : public ::testing::TestWithParam<FuzzTarget> {};

// What the fuzzers start from and what they once found; the folder says the verdict.
TEST_P(FuzzSeeds, GetTheVerdictTheyAreFiledUnder) {
    for (const auto& [folder, verdict] : {std::pair{"accepted", 1}, {"refused", 0}}) {
        int seeds = 0;
        for (const auto& seed :
             fs::directory_iterator(fs::path(QUORVELLE_FUZZ_SEEDS) / GetParam().name / folder)) {
            SCOPED_TRACE(seed.path());
            const std::string bytes = readFile(seed.path());
            EXPECT_EQ(
                GetParam().run(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()),
                verdict);
            ++seeds;
        }
        EXPECT_GT(seeds, 0) << folder;
    }
}

INSTANTIATE_TEST_SUITE_P(Targets, FuzzSeeds,
                         ::testing::Values(FuzzTarget{"chunk", &fuzz::runChunk},
                                           FuzzTarget{"descriptor", &fuzz::runDescriptor},
                                           FuzzTarget{"list_page", &fuzz::runListPage},
                                           FuzzTarget{"manifest", &fuzz::runManifest}),
                         [](const auto& row) { return std::string(row.param.name); });

}  // namespace
}  // namespace tide::testing
