#include "files/disk.h"

#include <chrono>
#include <functional>
#include <thread>

#include "config/install_folders.h"
#include "files/file_tree.h"
#include "files/raw_file.h"
#include "files/safe_path.h"
#include "files/share_file.h"
#include "files/win32.h"
#include "sync/markers.h"
#include "tide/assembly_fixture.h"
#include "tide/part_file.h"

namespace tide::testing {
namespace {

using ::testing::AnyOf;
using ::testing::IsEmpty;
using ::testing::SizeIs;

/// Three folders deep, about 600 characters.
const std::string kLong =
    std::string(200, 'a') + "/" + std::string(200, 'b') + "/" + std::string(200, 'c') + "/file";

TEST(Openable, IsTheFormWithoutLimits) {
    const std::pair<const wchar_t*, const wchar_t*> rows[] = {
        {LR"(C:\a\b)", LR"(\\?\C:\a\b)"},       {L"C:/a/b", LR"(\\?\C:\a\b)"},
        {LR"(C:\a\..\.\b)", LR"(\\?\C:\b)"},    {LR"(\\host\s\x)", LR"(\\?\UNC\host\s\x)"},
        {LR"(\\?\C:\a/b)", LR"(\\?\C:\a/b)"},   {LR"(\\.\pipe\x)", LR"(\\.\pipe\x)"},
        {LR"(C:\日本\ü)", LR"(\\?\C:\日本\ü)"},
    };
    for (const auto& [path, form] : rows) {
        EXPECT_EQ(files::openable(path).native(), form);
    }
}

TEST(LongPaths, AreMadeFoundMeasuredRenamedAndRemoved) {
    const TempDir temp;
    const fs::path file = temp / kLong;
    files::makeDirectories(file.parent_path());
    EXPECT_TRUE(files::isRealDirectory(file.parent_path()));
    PartFile part = PartFile::create(file);
    EXPECT_TRUE(part.append("12345") && part.close());
    EXPECT_EQ(files::fileSize(file), 5U);
    EXPECT_TRUE(files::flushToDisk(file) && files::isUnsharedFile(file));
    EXPECT_FALSE(files::renameEntry(file, temp / (kLong + "2")));
    EXPECT_THAT(files::entriesOf(file.parent_path()), SizeIs(1));
    EXPECT_TRUE(files::removeTree(temp / std::string(200, 'a')));
    EXPECT_THAT(files::entriesOf(temp / "."), IsEmpty());
}

TEST_F(AssemblyTest, InstallsPathsOfAnyLength) {
    bucket.publish({{kLong, {"content", "more"}}});
    for (const std::size_t fetches : {2U, 0U}) {
        EXPECT_EQ(assemble(), "");
        EXPECT_EQ(files::fileSize(staging() / files::utf8Path(kLong)), 11U);
        EXPECT_THAT(bucket.fetched, SizeIs(fetches));
    }
    EXPECT_TRUE(files::removeTree(staging()));
}

TEST(ReadOnly, StopsNeitherARenameNorARemoval) {
    const TempDir temp;
    for (const char* name : {"tree/sub/a", "tree/b"}) {
        writeFile(temp / name, "old");
        SetFileAttributesW((temp / name).c_str(), FILE_ATTRIBUTE_READONLY);
    }
    SetFileAttributesW((temp / "tree/sub").c_str(), FILE_ATTRIBUTE_READONLY);
    writeFile(temp / "new", "new");
    EXPECT_FALSE(files::renameEntry(temp / "new", temp / "tree/b"));
    EXPECT_EQ(readFile(temp / "tree/b"), "new");
    EXPECT_TRUE(files::removeTree(temp / "tree"));
    EXPECT_EQ(files::entryKind(temp / "tree"), files::EntryKind::kNothing);
}

/// Names that only the form without limits reaches; others make them through it.
TEST(OddNames, AreEntriesLikeOthers) {
    const TempDir temp;
    const std::wstring tree = files::openable(temp / "tree").native();
    for (const std::wstring& folder : {tree, tree + LR"(\dir.)"}) {
        ASSERT_NE(CreateDirectoryW(folder.c_str(), nullptr), 0);
        for (const wchar_t* name : {L"nul", L"foo.", L"trail ", L"foo"}) {
            const HANDLE made = CreateFileW((folder + L'\\' + name).c_str(), GENERIC_WRITE, 0,
                                            nullptr, CREATE_NEW, FILE_ATTRIBUTE_READONLY, nullptr);
            ASSERT_NE(made, INVALID_HANDLE_VALUE);
            CloseHandle(made);
        }
    }
    EXPECT_THAT(files::entriesOf(temp / "tree"), SizeIs(5));
    EXPECT_EQ(quorvelle::countFiles(QString::fromStdString(files::utf8Text(temp / "tree"))), 8);
    EXPECT_TRUE(files::removeTree(temp / "tree"));
    EXPECT_EQ(files::entryKind(temp / "tree"), files::EntryKind::kNothing);
}

TEST(MountPoint, IsTheRootOfADrive) {
    const TempDir temp;
    EXPECT_TRUE(files::isMountPoint((temp / ".").root_path()));
    EXPECT_FALSE(files::isMountPoint(temp / "."));
}

/// A junction; where it cannot be made (Wine), a symbolic link of the system below, which
/// shows the same attributes.
void makeJunction(const fs::path& at, const fs::path& target) {
    using UnixName = char*(CDECL*)(const wchar_t*);
    const auto unixName = reinterpret_cast<UnixName>(reinterpret_cast<void*>(
        GetProcAddress(GetModuleHandleW(L"kernel32"), "wine_get_unix_file_name")));
    const std::string command =
        unixName == nullptr
            ? "mklink /J \"" + at.string() + "\" \"" + target.string() + "\" >nul"
            : std::string("start /wait /unix /bin/ln -s ") + unixName(target.c_str()) + ' ' +
                  unixName(at.parent_path().c_str()) + '/' + at.filename().string();
    EXPECT_EQ(std::system(command.c_str()), 0);
    // A program of the system below is not waited for.
    for (int looks = 0; looks < 1000 && files::entryKind(at) == files::EntryKind::kNothing;
         ++looks) {
        ::Sleep(10);
    }
}

TEST(PathRules, AreThoseOfWindows) {
    EXPECT_EQ(files::comparablePath("\u00e4/b"), files::comparablePath("\u00c4/B"));
    EXPECT_EQ(files::utf8Text(LR"(C:/a\b/ü)"), "C:\\a\\b\\ü");
    for (const char* path : {"...", "a:b", "nul", "a.", "\xff"}) {
        EXPECT_FALSE(files::isSafeRelativePath(path)) << path;
    }
}

TEST(Junctions, AreNeverFollowed) {
    const TempDir temp;
    writeFile(temp / "outside/precious", "p");
    writeFile(temp / "tree/file", "f");
    makeJunction(temp / "tree/link", temp / "outside");
    ASSERT_EQ(files::entryKind(temp / "tree/link"), files::EntryKind::kOther);
    EXPECT_EQ(readFile(files::behindLink(temp / "tree/link") / "precious"), "p");
    // Wine cannot remove such a link; what it leads to has to stand all the same.
    files::removeTree(temp / "tree");
    EXPECT_EQ(files::entryKind(temp / "tree/file"), files::EntryKind::kNothing);
    EXPECT_EQ(readFile(temp / "outside/precious"), "p");
}

TEST(Patience, IsForFilesInUseAndEndsAfterTwoSeconds) {
    struct Row {
        const char* name;
        DWORD error;
        std::size_t failures;
        std::size_t attempts;
        DWORD result;
    };
    const std::size_t all = files::win32::kWaits.size() + 1;
    for (const Row& row : {Row{"at once", ERROR_SHARING_VIOLATION, 0, 1, 0},
                           Row{"scanned", ERROR_SHARING_VIOLATION, 3, 4, 0},
                           Row{"denied for a moment", ERROR_ACCESS_DENIED, 1, 2, 0},
                           Row{"emptied a moment ago", ERROR_DIR_NOT_EMPTY, 2, 3, 0},
                           Row{"in use", ERROR_SHARING_VIOLATION, 99, all, ERROR_SHARING_VIOLATION},
                           Row{"missing", ERROR_FILE_NOT_FOUND, 99, 1, ERROR_FILE_NOT_FOUND}}) {
        SCOPED_TRACE(row.name);
        std::size_t attempts = 0;
        EXPECT_EQ(files::win32::patiently([&] {
                      SetLastError(row.error);
                      return ++attempts > row.failures;
                  }),
                  row.result);
        EXPECT_EQ(attempts, row.attempts);
    }
}

/// Somebody's handle that leaves others the given rights only.
HANDLE hold(const fs::path& path, DWORD shared) {
    const HANDLE held = CreateFileW(path.c_str(), GENERIC_READ, shared, nullptr, OPEN_EXISTING,
                                    FILE_ATTRIBUTE_NORMAL, nullptr);
    EXPECT_NE(held, INVALID_HANDLE_VALUE);
    return held;
}

TEST(Patience, IsHadWhereverAFileIsOpenedToBeChangedOrAMarkerIsRead) {
    const TempDir temp;
    const fs::path file = temp / ".quorvelle/app.installed.json";
    const QString app = QString::fromStdString(files::utf8Text(temp / "app"));
    struct Row {
        const char* name;
        DWORD shared;
        std::function<bool()> act;
    };
    for (const Row& row :
         {Row{"flushed", FILE_SHARE_READ, [&] { return files::flushToDisk(file); }},
          Row{"gone on with", FILE_SHARE_READ, [&] { return PartFile::resume(file, 1).isOpen(); }},
          Row{"a marker", 0,
              [&] { return quorvelle::readInstalledMarker(app).build == QString("b"); }},
          Row{"a marker to be removed", FILE_SHARE_READ, [&] {
                  fs::copy_file(file, temp / ".quorvelle/app.swap.json");
                  const HANDLE held = hold(temp / ".quorvelle/app.swap.json", FILE_SHARE_READ);
                  const std::jthread reader([&] { ::Sleep(100), CloseHandle(held); });
                  return quorvelle::removeSwapRecord(app);
              }}}) {
        SCOPED_TRACE(row.name);
        writeFile(file, R"({"build":"b"})");
        const HANDLE held = hold(file, row.shared);
        const std::jthread scanner([&] { ::Sleep(100), CloseHandle(held); });
        EXPECT_TRUE(row.act());
    }
}

TEST(ReadingAnInstall, KeepsNobodyFromChangingIt) {
    const TempDir temp;
    writeFile(temp / "a", "a");
    writeFile(temp / "b", "b");
    files::RawFile reader(temp / "a", files::RawFile::For::kReading);
    ASSERT_TRUE(reader.isOpen());
    writeFile(temp / "a", "A");
    EXPECT_NE(MoveFileExW((temp / "a").c_str(), (temp / "c").c_str(), 0), 0);
    EXPECT_NE(DeleteFileW((temp / "c").c_str()), 0);
    char byte = 0;
    EXPECT_EQ(reader.read(0, {&byte, 1}), 1U);
    EXPECT_EQ(byte, 'A');
}

/// What a build shares with the one before under a second name.
TEST(SecondNames, AreForOldFilesThatNobodyWrites) {
    const TempDir temp;
    const fs::path file = temp / "old";
    writeFile(file, "bytes");
    EXPECT_FALSE(files::stampOfUnwritten(file)) << "changed a moment ago";
    fs::last_write_time(file, fs::file_time_type::clock::now() - std::chrono::hours(1));
    const auto stamp = files::stampOfUnwritten(file);
    ASSERT_TRUE(stamp);
    ASSERT_TRUE(files::linkFile(file, temp / "name"));
    EXPECT_EQ(files::stampOfUnwritten(temp / "name"), stamp);
    const HANDLE writer = CreateFileW(file.c_str(), GENERIC_WRITE, files::win32::kShareAll, nullptr,
                                      OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    ASSERT_NE(writer, INVALID_HANDLE_VALUE);
    EXPECT_FALSE(files::stampOfUnwritten(temp / "name"));
    CloseHandle(writer);
    EXPECT_EQ(files::stampOfUnwritten(temp / "name"), stamp);
}

TEST(InstallFolders, MeetWithoutCase) {
    EXPECT_TRUE(quorvelle::config::foldersMeet("C:/Games/App", R"(c:\games\app\sub)"));
    EXPECT_FALSE(quorvelle::config::foldersMeet("C:/Games/App", "C:/Games/App2"));
}

TEST(Rename, OfAFileInUseFailsWithACodeThatIsWaitedFor) {
    const TempDir temp;
    writeFile(temp / "from", "f");
    writeFile(temp / "to", "t");
    const HANDLE held = hold(temp / "to", FILE_SHARE_READ);
    EXPECT_THAT(files::renameEntry(temp / "from", temp / "to", files::WhenInUse::kFail).value(),
                AnyOf(ERROR_SHARING_VIOLATION, ERROR_ACCESS_DENIED));
    EXPECT_EQ(readFile(temp / "from"), "f");
    CloseHandle(held);
    EXPECT_FALSE(files::renameEntry(temp / "from", temp / "to"));
}

}  // namespace
}  // namespace tide::testing
