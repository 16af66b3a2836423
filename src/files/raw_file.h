#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <string_view>

namespace files {

/// An open regular file, closed when it goes. Nothing is buffered here. While it is open,
/// others may read, write, rename, replace and remove the file, on Windows too, where the
/// programs of an install would be kept from it otherwise.
class RawFile {
public:
    enum class For {
        kReading,
        kWriting,  ///< reading as well; the file stands
        kWritingAnew,
    };

    /// Opens the file; kWritingAnew makes it, and fails where anything stands: that may be a
    /// second name of another file, or a link to one. On Windows who wants to write waits
    /// up to 2 s for others who hold it; readers do not wait. Check isOpen().
    RawFile(const std::filesystem::path& path, For purpose);
    ~RawFile();
    RawFile(RawFile&& other) noexcept;
    RawFile& operator=(RawFile&&) = delete;

    bool isOpen() const { return handle != kNone; }

    /// Whether opening it, or the last read, was refused because somebody else holds the file
    /// or that part of it for himself (Windows alone).
    bool isInUse() const { return heldByOthers; }

    /// Reads from an offset on until the space is full or the file ends. Returns the number
    /// of bytes; nothing when it cannot be read.
    std::optional<std::size_t> read(std::uint64_t offset, std::span<char> space);

    /// Writes all bytes from an offset on; false when not all of them were written.
    bool write(std::uint64_t offset, std::string_view bytes) const;

    /// Lets what was written begin its way to the disk, without waiting: a flush then finds less
    /// to do. Nothing may rely on it.
    void beginFlush() const;

    /// Cuts off what stands behind the first `size` bytes.
    bool cutOff(std::uint64_t size) const;

    /// Closes the file before it goes. False when the system has to tell of a failed write
    /// only now.
    bool close();

private:
    static constexpr std::intptr_t kNone = -1;

    /// A descriptor or a HANDLE.
    std::intptr_t handle = kNone;
    bool heldByOthers = false;
};

}  // namespace files
