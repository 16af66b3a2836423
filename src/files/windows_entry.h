#pragma once

#include <cstdint>

#include "files/disk.h"

namespace files {

/// What an entry is on Windows, by its attributes and, where these tell of a reparse point,
/// the point's tag. Only tags that stand for another name make a link of it (symbolic links,
/// junctions, mounted volumes). What OneDrive, deduplication and compression mark are files
/// and folders like others. With a tag that is not known (0) the entry counts as a link, so
/// that nothing is read, written or removed behind it.
constexpr EntryKind windowsEntryKind(std::uint32_t attributes, std::uint32_t tag) {
    constexpr std::uint32_t kDirectoryAttribute = 0x10;
    constexpr std::uint32_t kDeviceAttribute = 0x40;
    constexpr std::uint32_t kReparsePointAttribute = 0x400;
    constexpr std::uint32_t kNameSurrogate = 0x20000000;
    const bool isLink =
        (attributes & kReparsePointAttribute) != 0 && (tag == 0 || (tag & kNameSurrogate) != 0);
    if (isLink || (attributes & kDeviceAttribute) != 0) {
        return EntryKind::kOther;
    }
    return (attributes & kDirectoryAttribute) != 0 ? EntryKind::kDirectory : EntryKind::kFile;
}

}  // namespace files
