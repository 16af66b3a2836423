#include <QScopeGuard>
#include <chrono>
#include <cstdlib>

#include "files/safe_path.h"
#include "tide/assembly_fixture.h"
#include "tide/chunks/local_index.h"

namespace tide::testing {
namespace {

using ::testing::ElementsAre;

bool runs(const std::string& commands) {
    return std::system(("{ " + commands + "; } >/dev/null 2>&1").c_str()) == 0;
}

/// Whether blocks of a file are those of another one as well.
bool hasClonedBlocks(const fs::path& file) {
    return runs("filefrag -s -v '" + file.string() + "' | grep shared");
}

TEST_F(AssemblyTest, UnchangedFilesAreClonedWhereTheFileSystemCan) {
    for (const char* type : {"btrfs", "xfs"}) {
        SCOPED_TRACE(type);
        const std::string place = "'" + (temp / "").string() + "'";
        if (!runs("cd " + place + " && truncate -s 400M disk && mkfs." + type +
                  " -q -f disk && mount -o loop disk .")) {
            GTEST_SKIP() << "no " << type << " can be mounted here";
        }
        const auto unmount = qScopeGuard([&] { runs("umount " + place); });
        const std::string large(300000, 'l');
        const Build build = {{"large", {large}}, {"lib/small", {std::string(9000, 's')}}};
        writeFile(temp / "install/large", large);
        writeFile(temp / "install/lib/small", std::string(9000, 's'));
        expectAssembled(build);
        EXPECT_THAT(bucket.fetched, ::testing::IsEmpty());
        EXPECT_TRUE(hasClonedBlocks(staging() / "large"));
        EXPECT_TRUE(hasClonedBlocks(staging() / "lib/small"));
        EXPECT_THAT(outcome.shared, ::testing::IsEmpty());
        // Whoever writes into one of them does not write into the other.
        std::ofstream(temp / "install/large", std::ios::in | std::ios::out) << "written";
        expectStaged(build);
    }
}

TEST_F(AssemblyTest, AnUnchangedFileIsOneFileUnderTwoNames) {
    const std::string large(300000, 'l');
    writeFile(temp / "install/lib/same", large);
    writeFile(temp / "install/old name", large + "!");
    writeFile(temp / "install/s", "small");
    // Of a change of this very moment nobody can tell whether another one follows.
    for (const char* name : {"install/lib/same", "install/old name", "install/s"}) {
        fs::last_write_time(temp / name, fs::file_time_type::clock::now() - std::chrono::hours(1));
    }
    expectAssembled({{"lib/same", {large}}, {"lib/new name", {large + "!"}}, {"s", {"small"}}});
    EXPECT_THAT(bucket.fetched, ::testing::IsEmpty());
    EXPECT_TRUE(fs::equivalent(staging() / "lib/same", temp / "install/lib/same"));
    EXPECT_TRUE(fs::equivalent(staging() / "lib/new name", temp / "install/old name"));
    EXPECT_FALSE(fs::equivalent(staging() / "s", temp / "install/s"));
    EXPECT_TRUE(areUnwritten(staging(), outcome.shared));
    // The next build must not reach the install through the second name.
    expectAssembled({{"lib/same", {"otherwise"}}});
    EXPECT_EQ(readFile(temp / "install/lib/same"), large);
}

TEST_F(AssemblyTest, LinksInStagingGoAndWhatTheyLeadToStays) {
    writeFile(temp / "outside/precious", "p");
    writeFile(staging() / "old/tree/stray", "stray");
    fs::create_directory_symlink(temp / "outside", staging() / "a");
    fs::create_directory_symlink(temp / "outside", staging() / "link");
    fs::create_directory_symlink(temp / "outside", staging() / "old/link");
    fs::create_symlink(temp / "outside/precious", staging() / "top.part");
    fs::create_symlink("nowhere", staging() / "top");
    expectAssembled({{"a/b/file", {"content"}}, {"top", {"t"}}});
    EXPECT_FALSE(fs::is_symlink(staging() / "top"));
    EXPECT_EQ(readFile(temp / "outside/precious"), "p");
    EXPECT_THAT(temp.entries("outside"), ElementsAre("precious"));
}

TEST(PathRules, TellCaseApartAndKnowNoReservedNames) {
    EXPECT_NE(files::comparablePath("a"), files::comparablePath("A"));
    for (const char* path : {"...", "..a/b", "a:b", "C:x", "nul", "a.", " a "}) {
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
    EXPECT_EQ(indexFiles(temp / "install", {}).size(), 1U);
}

}  // namespace
}  // namespace tide::testing
