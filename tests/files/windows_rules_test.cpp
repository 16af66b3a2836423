#include <gtest/gtest.h>

#include "files/safe_path.h"
#include "files/windows_entry.h"

namespace files {

TEST(WindowsEntry, IsALinkByItsTagAlone) {
    constexpr std::uint32_t kFolder = 0x10;
    constexpr std::uint32_t kMarked = 0x400;
    struct Row {
        const char* name;
        std::uint32_t attributes;
        std::uint32_t tag;
        EntryKind kind;
    };
    for (const Row& row :
         {Row{"file", 0x20, 0, EntryKind::kFile},
          {"folder", kFolder, 0, EntryKind::kDirectory},
          {"device", 0x40, 0, EntryKind::kOther},
          {"junction", kFolder | kMarked, 0xA0000003, EntryKind::kOther},
          {"symbolic link", kMarked, 0xA000000C, EntryKind::kOther},
          {"link of a Linux subsystem", kMarked, 0xA000001D, EntryKind::kOther},
          {"unknown", kFolder | kMarked, 0, EntryKind::kOther},
          {"deduplicated", kMarked, 0x80000013, EntryKind::kFile},
          {"compressed", kMarked, 0x80000017, EntryKind::kFile},
          {"of a cloud", kMarked, 0x9000601A, EntryKind::kFile},
          {"folder of a cloud", kFolder | kMarked, 0x9000101A, EntryKind::kDirectory}}) {
        EXPECT_EQ(windowsEntryKind(row.attributes, row.tag), row.kind) << row.name;
    }
}

TEST(WindowsPaths, AreUnsafeWithNamesThatItReserves) {
    for (const char* path :
         {"C:a", "C:/a", "a:stream", "d/a.", "d /a", "NUL", "d/nul.txt", "con", "com1", "LPT9.log",
          "COM\u00b9", "aux .txt", "CONOUT$", "a\tb", "a|b", "a?", "d/\x7f/prn/x"}) {
        EXPECT_FALSE(isWindowsSafePath(path)) << path;
    }
    for (const char* path : {"nulls", "com", "com10", "comx", "lpt", "a.nul", "d/.x", "console"}) {
        EXPECT_TRUE(isWindowsSafePath(path)) << path;
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
        EXPECT_EQ(whyNoWindowsInstallDirectory(path), reason) << path;
    }
}

}  // namespace files
