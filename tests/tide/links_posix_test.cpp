#include "files/safe_path.h"
#include "tide/assembly_fixture.h"
#include "tide/chunks/local_index.h"
#include "tide/verify.h"

namespace tide {
namespace {

namespace fs = std::filesystem;
using testing::AssemblyTest;
using testing::Build;
using ::testing::ElementsAre;
using testing::readFile;
using testing::TempDir;
using testing::writeFile;

TEST_F(AssemblyTest, AnUnchangedFileIsOneFileUnderTwoNames) {
    const Build build = {{"lib/same", {"unchanged"}}};
    bucket.publish(build);
    writeFile(temp / "install/lib/same", "unchanged");
    EXPECT_TRUE(assemble()) << err;
    expectAssembled(build);
    EXPECT_TRUE(fs::equivalent(staging() / "lib/same", temp / "install/lib/same"));
    // The next build must not reach the install through the second name.
    bucket.publish({{"lib/same", {"otherwise"}}});
    EXPECT_TRUE(assemble()) << err;
    EXPECT_EQ(readFile(staging() / "lib/same"), "otherwise");
    EXPECT_EQ(readFile(temp / "install/lib/same"), "unchanged");
}

TEST_F(AssemblyTest, LinksInStagingGoAndWhatTheyLeadToStays) {
    const Build build = {{"a/b/file", {"content"}}, {"top", {"t"}}};
    bucket.publish(build);
    writeFile(temp / "outside/precious", "p");
    writeFile(staging() / "old/tree/stray", "stray");
    fs::create_directory_symlink(temp / "outside", staging() / "a");
    fs::create_directory_symlink(temp / "outside", staging() / "link");
    fs::create_directory_symlink(temp / "outside", staging() / "old/link");
    fs::create_symlink(temp / "outside/precious", staging() / "top.part");
    fs::create_symlink("nowhere", staging() / "top");
    EXPECT_TRUE(assemble()) << err;
    expectAssembled(build);
    EXPECT_FALSE(fs::is_symlink(staging() / "top"));
    EXPECT_EQ(readFile(temp / "outside/precious"), "p");
    EXPECT_THAT(temp.entries("outside"), ElementsAre("precious"));
}

TEST(PathRules, TellCaseApartAndKnowNoReservedNames) {
    EXPECT_NE(files::comparablePath("a"), files::comparablePath("A"));
    for (const char* path : {"...", "a:b", "nul", "a."}) {
        EXPECT_TRUE(files::isSafeRelativePath(path)) << path;
    }
}

TEST(LocalIndexTest, LinksAreNoFilesOfTheTree) {
    const TempDir temp;
    writeFile(temp / "install/deep/a", "aaa");
    writeFile(temp / "outside/c", "c");
    fs::create_directory_symlink(temp / "outside", temp / "install/link");
    fs::create_symlink(temp / "install", temp / "install/deep/loop");
    fs::create_symlink(temp / "outside/c", temp / "install/c");
    LocalIndex index;
    buildLocalIndex(temp / "install", index);
    EXPECT_EQ(index.size(), 1U);
}

TEST(VerifyLinks, CountAsWhatTheyLeadTo) {
    const TempDir temp;
    writeFile(temp / "install/real", "firstsecond");
    fs::create_symlink("real", temp / "install/good");
    fs::create_symlink("nowhere", temp / "install/dangling");
    std::vector<std::string> issues;
    const auto manifest = testing::manifestOf({{"good", {"firstsecond"}}, {"dangling", {"x"}}});
    for (const bool quick : {true, false}) {
        EXPECT_TRUE(verifyFiles(
            files::utf8Text(temp / "install"), manifest, {},
            [&](const std::string& path, const std::string& problem) {
                issues.push_back(path + ": " + problem);
            },
            nullptr, quick));
    }
    EXPECT_EQ(issues, (std::vector<std::string>{"dangling: missing", "dangling: missing"}));
}

}  // namespace
}  // namespace tide
