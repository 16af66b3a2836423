#pragma once

#include <cstdint>
#include <filesystem>
#include <string_view>

#include "files/raw_file.h"

namespace tide {

/// A file that is being written from front to back. Nothing here waits for the disk, but what
/// was written is sent on its way while more of it comes.
class PartFile {
public:
    /// Opens a new, empty file where nothing stands. Check isOpen().
    static PartFile create(const std::filesystem::path& path);
    /// Opens a file that exists to go on behind its first `kept` bytes, which stay.
    static PartFile resume(const std::filesystem::path& path, std::uint64_t kept);

    bool isOpen() const { return file.isOpen(); }

    bool append(std::string_view bytes);

    /// Bytes from the beginning of the file up to the writing position.
    std::uint64_t size() const { return written; }

    /// Cuts off what an earlier run left behind the last byte. False when anything was not
    /// written.
    bool close();

private:
    PartFile(const std::filesystem::path& place, files::RawFile::For purpose, std::uint64_t kept);

    std::filesystem::path path;
    files::RawFile file;
    std::uint64_t written;
    /// What of it was sent on its way to the disk.
    std::uint64_t sent;
    /// An earlier run may have left more than what is written now.
    bool resumed;
};

}  // namespace tide
