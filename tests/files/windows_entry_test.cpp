#include "files/windows_entry.h"

#include <gtest/gtest.h>

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

}  // namespace files
