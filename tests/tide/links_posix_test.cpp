#include <fcntl.h>
#include <linux/fiemap.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <cstdlib>

#include "files/safe_path.h"
#include "tide/assembly_fixture.h"
#include "tide/chunks/local_index.h"
#include "tide/verify.h"

namespace tide::testing {
namespace {

using ::testing::ElementsAre;

/// Of a change of this very moment nobody can tell whether another one follows.
void makeOld(const fs::path& file) {
    fs::last_write_time(file, fs::last_write_time(file) - std::chrono::hours(1));
}

/// A file system of its own over a folder, while it exists; nothing happens where this
/// user may not mount or the system does not know it.
class Mounted {
public:
    Mounted(const TempDir& temp, const std::string& type)
        : image(temp / ".." / (temp.name() + ".disk")), place(temp / "") {
        const std::string commands = "truncate -s 400M '" + image.string() + "' && mkfs." + type +
                                     " -q '" + image.string() + "' && mount -o loop '" +
                                     image.string() + "' '" + place.string() + "'";
        stands = std::system(("{ " + commands + "; } >/dev/null 2>&1").c_str()) == 0;
    }
    ~Mounted() {
        if (stands) {
            std::system(("umount '" + place.string() + "'").c_str());
        }
        fs::remove(image);
    }
    Mounted(const Mounted&) = delete;
    Mounted& operator=(const Mounted&) = delete;

    bool stands = false;

private:
    const fs::path image;
    const fs::path place;
};

/// Whether blocks of a file are those of another one as well.
bool hasClonedBlocks(const fs::path& file) {
    alignas(fiemap) std::array<char, sizeof(fiemap) + sizeof(fiemap_extent)> bytes = {};
    auto* const asked = reinterpret_cast<fiemap*>(bytes.data());
    asked->fm_length = ~std::uint64_t{0};
    asked->fm_flags = FIEMAP_FLAG_SYNC;
    asked->fm_extent_count = 1;
    const int opened = ::open(file.c_str(), O_RDONLY);
    const bool known = ::ioctl(opened, FS_IOC_FIEMAP, asked) == 0;
    ::close(opened);
    return known && (asked->fm_extents[0].fe_flags & FIEMAP_EXTENT_SHARED) != 0;
}

TEST_F(AssemblyTest, UnchangedFilesAreClonedWhereTheFileSystemCan) {
    for (const char* type : {"btrfs", "xfs"}) {
        SCOPED_TRACE(type);
        const Mounted disk(temp, type);
        if (!disk.stands) {
            GTEST_SKIP() << "no " << type << " can be mounted here";
        }
        const std::string large(300000, 'l');
        const Build build = {{"large", {large}}, {"lib/small", {std::string(9000, 's')}}};
        bucket.publish(build);
        writeFile(temp / "install/large", large);
        writeFile(temp / "install/lib/small", std::string(9000, 's'));
        ASSERT_TRUE(assemble()) << err;
        EXPECT_THAT(bucket.fetched, ::testing::IsEmpty());
        EXPECT_TRUE(hasClonedBlocks(staging() / "large"));
        EXPECT_TRUE(hasClonedBlocks(staging() / "lib/small"));
        EXPECT_THAT(outcome.shared, ::testing::IsEmpty());
        // Whoever writes into one of them does not write into the other.
        std::ofstream(temp / "install/large", std::ios::in | std::ios::out) << "written";
        expectAssembled(build);
    }
}

TEST_F(AssemblyTest, AnUnchangedFileIsOneFileUnderTwoNames) {
    const std::string large(300000, 'l');
    const Build build = {{"lib/same", {large}}, {"lib/new name", {large + "!"}}, {"s", {"small"}}};
    bucket.publish(build);
    writeFile(temp / "install/lib/same", large);
    writeFile(temp / "install/old name", large + "!");
    writeFile(temp / "install/s", "small");
    for (const char* name : {"install/lib/same", "install/old name", "install/s"}) {
        makeOld(temp / name);
    }
    ASSERT_TRUE(assemble()) << err;
    expectAssembled(build);
    EXPECT_THAT(bucket.fetched, ::testing::IsEmpty());
    EXPECT_TRUE(fs::equivalent(staging() / "lib/same", temp / "install/lib/same"));
    EXPECT_TRUE(fs::equivalent(staging() / "lib/new name", temp / "install/old name"));
    EXPECT_FALSE(fs::equivalent(staging() / "s", temp / "install/s"));
    EXPECT_TRUE(areUnwritten(staging(), outcome.shared));
    // The next build must not reach the install through the second name.
    bucket.publish({{"lib/same", {"otherwise"}}});
    EXPECT_TRUE(assemble()) << err;
    EXPECT_EQ(readFile(staging() / "lib/same"), "otherwise");
    EXPECT_EQ(readFile(temp / "install/lib/same"), large);
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
    const auto manifest = manifestOf({{"good", {"firstsecond"}}, {"dangling", {"x"}}});
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
}  // namespace tide::testing
