#include <gmock/gmock.h>
#include <json/writer.h>

#include "files/safe_path.h"
#include "tide/manifest/manifest.h"

namespace tide {
namespace {

using ::testing::IsEmpty;
using ::testing::SizeIs;

Json::Value manifestOf(const std::string& files) {
    Json::Value manifest;
    EXPECT_TRUE(parseManifest(R"({"schema": 1, "files": )" + files + '}', manifest, nullptr));
    return manifest;
}

// What readManifestFiles says of the text of "files"; empty when it takes it.
std::string verdictOn(const std::string& list) {
    std::vector<ManifestFile> files{{"kept", 0, {}}};
    std::string err;
    const bool read = readManifestFiles(manifestOf(list), files, &err);
    EXPECT_EQ(read, err.empty());
    EXPECT_TRUE(read || (files.size() == 1 && files[0].path == "kept"));
    EXPECT_EQ(readManifestFiles(manifestOf(list), files, nullptr), read);
    return err;
}

TEST(ManifestFiles, ReadsFilesAndChunksInOrder) {
    std::vector<ManifestFile> files;
    const Json::Value manifest = manifestOf(R"([
        {"path": "bin/übung.exe", "size": 18446744073709551615,
         "chunks": [{"h": "b", "n": 4294967297}, {"h": "a", "n": 1}, {"h": "b", "n": 4294967297}]},
        {"path": "a", "size": 0, "chunks": []}])");
    ASSERT_TRUE(readManifestFiles(manifest, files, nullptr));
    ASSERT_THAT(files, SizeIs(2));
    EXPECT_EQ(files[0].path, "bin/übung.exe");
    EXPECT_EQ(files[0].size, 18446744073709551615u);
    ASSERT_THAT(files[0].chunks, SizeIs(3));
    EXPECT_EQ(files[0].chunks[0].id, "b");
    EXPECT_EQ(files[0].chunks[0].length, 4294967297u);
    EXPECT_EQ(files[0].chunks[1].id, "a");
    EXPECT_EQ(files[1].path, "a");
    EXPECT_THAT(files[1].chunks, IsEmpty());
}

// Other malformed lists are fuzz seeds.
TEST(ManifestFiles, RefusesLists) {
    const std::string none = "manifest lists no files";
    const std::string twice = "manifest lists the path twice: ";
    const std::pair<const char*, std::string> rows[] = {
        {"[]", none},
        {R"({"path": "a"})", none},
        {R"([{"path": "a"}, {"path": "b/a"}])", ""},
        {R"([{"path": "a"}, {"path": "a"}])", twice + "a"},
        {R"([{"path": "a"}, {"path": "a.part"}])", twice + "a.part"},
        {R"([{"path": "d/a.part"}, {"path": "d/a"}])", twice + "d/a.part"},
        {R"([{"path": "a.part"}, {"path": "a.part.part.part"}])", ""},
        {R"(["a"])", kMalformedManifest},
    };
    for (const auto& [list, error] : rows) {
        EXPECT_EQ(verdictOn(list), error) << list;
    }
}

TEST(ManifestFiles, RefusesUnsafePaths) {
    const std::string longest(1024, 'x');
    const char* unsafe[] = {"",    "/",    "/etc/passwd", "..",   "../a",  "a/../b", "a/..", "./a",
                            "a/.", "a//b", "a/",          "a\\b", "..\\a", "C:\\a",  "a/\\", "."};
    for (const char* path : unsafe) {
        const std::string list = Json::valueToQuotedString(path);
        EXPECT_EQ(verdictOn(R"([{"path": )" + list + "}]"),
                  "manifest contains an unsafe path: " + std::string(path));
    }
    EXPECT_FALSE(files::isSafeRelativePath(std::string("a\0b", 3)));
    EXPECT_TRUE(files::isSafeRelativePath(longest));
    EXPECT_FALSE(files::isSafeRelativePath(longest + 'x'));
    // 1024 UTF-16 units: a letter of two bytes is one, a sign of four bytes is two.
    std::string signs = "êê";
    for (int i = 0; i < 511; ++i) {
        signs += "😀";
    }
    EXPECT_TRUE(files::isSafeRelativePath(signs));
    EXPECT_FALSE(files::isSafeRelativePath(signs + 'x'));
    for (const char* path : {"a", "a/b/c.txt", ".hidden", "a..b/..c", "bêta/日本", "a b"}) {
        EXPECT_TRUE(files::isSafeRelativePath(path)) << path;
    }
}

TEST(ManifestFiles, KnowsTheNamesThatWindowsReserves) {
    for (const char* path :
         {"C:a", "C:/a", "a:stream", "d/a.", "d /a", "NUL", "d/nul.txt", "con", "com1", "LPT9.log",
          "COM\u00b9", "aux .txt", "CONOUT$", "a\tb", "a|b", "a?", "d/\x7f/prn/x"}) {
        EXPECT_FALSE(files::isWindowsSafePath(path)) << path;
    }
    for (const char* path : {"nulls", "com", "com10", "comx", "lpt", "a.nul", "d/.x", "console"}) {
        EXPECT_TRUE(files::isWindowsSafePath(path)) << path;
    }
}

TEST(InstallDirectories, AreRefusedWhereWindowsWouldUseOthers) {
    const std::string drive = "a drive cannot be replaced as a whole - name a folder in it";
    const std::pair<const char*, std::string> rows[] = {
        {"C:/", drive},
        {"C:", drive},
        {"//host/share", drive},
        {"//host/share/", drive},
        {"C:/x/nul", "'nul' is the name of a device"},
        {"C:/Com1.txt/x", "'Com1.txt' is the name of a device"},
        {"C:/x/app.", "'app.' ends in a dot or a blank, which Windows leaves out"},
        {"C:/x /app", "'x ' ends in a dot or a blank, which Windows leaves out"},
        {"C:/x/a:b", "'a:b' holds a character that Windows reserves"},
        {"//host/share/a?", "'a?' holds a character that Windows reserves"},
        {"C:/x/.app", ""},
        {"//host/share/app", ""},
    };
    for (const auto& [path, reason] : rows) {
        EXPECT_EQ(files::whyNoWindowsInstallDirectory(path), reason) << path;
    }
}

}  // namespace
}  // namespace tide
