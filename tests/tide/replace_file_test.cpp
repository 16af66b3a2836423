#include "tide/replace_file.h"

#include <gmock/gmock.h>

#include "tide/tide_files.h"

namespace tide::testing {
namespace {

using ::testing::ElementsAre;

// A folder that is not empty is in a file's way like a file in use.
class ReplaceFileTest : public ::testing::Test {
protected:
    ReplaceFileTest() {
        writeFile(temp / "f.part", "new");
        writeFile(temp / "f/busy", "");
    }

    /// The place is free from attempt `freeFrom` on.
    bool replace(int attempts, int freeFrom) {
        return replaceFile(
            temp / "f.part", temp / "f", attempts,
            [&](const std::string& path, int attempt, int maximum) {
                events.push_back(path + " " + std::to_string(attempt) + "/" +
                                 std::to_string(maximum));
                if (attempt == freeFrom) {
                    fs::remove_all(temp / "f");
                }
            },
            [&](std::chrono::nanoseconds time) { events.push_back(std::to_string(time.count())); },
            &err);
    }

    TempDir temp;
    std::vector<std::string> events;
    std::string err;
};

TEST_F(ReplaceFileTest, TriesAgainAfterASecondUntilTheFileIsFree) {
    const std::string name = files::utf8Text(temp / "f");
    EXPECT_TRUE(replace(5, 2));
    EXPECT_THAT(events, ElementsAre(name + " 1/5", "1000000000", name + " 2/5", "1000000000"));
    EXPECT_EQ(readFile(temp / "f"), "new");
    EXPECT_EQ(err, "");
}

TEST_F(ReplaceFileTest, GivesUpAfterTheLastAttemptAndLeavesBothFiles) {
    EXPECT_FALSE(replace(2, 3));
    EXPECT_EQ(events.size(), 4U);
    EXPECT_THAT(err, ::testing::StartsWith("'" + files::utf8Text(temp / "f") +
                                           "' is in use - could not replace it ("));
    EXPECT_EQ(readFile(temp / "f.part"), "new");
    EXPECT_TRUE(fs::exists(temp / "f/busy"));
}

}  // namespace
}  // namespace tide::testing
