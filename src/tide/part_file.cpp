#include "tide/part_file.h"

#include <optional>

#include "files/disk.h"

namespace tide {

namespace {

/// So much is worth a call that opens the file once more.
constexpr std::uint64_t kFlushStep = std::uint64_t{8} << 20;

}  // namespace

PartFile::PartFile(const std::filesystem::path& file, std::ios::openmode mode, std::uint64_t kept)
    : path(file),
      stream(files::openable(file), mode | std::ios::binary),
      written(kept),
      sent(kept) {
    stream.seekp(static_cast<std::streamoff>(kept));
}

PartFile PartFile::create(const std::filesystem::path& path) {
    return PartFile(path, std::ios::out | std::ios::trunc, 0);
}

PartFile PartFile::resume(const std::filesystem::path& path, std::uint64_t kept) {
    return PartFile(path, std::ios::in | std::ios::out, kept);
}

bool PartFile::append(std::string_view bytes) {
    stream.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    written += bytes.size();
    if (written - sent >= kFlushStep) {
        files::beginFlush(path);
        sent = written;
    }
    return stream.good();
}

bool PartFile::close() {
    stream.close();
    if (stream.fail()) {
        return false;
    }
    const std::optional<std::uint64_t> size = files::fileSize(path);
    return size && (*size <= written || files::truncateFile(path, written));
}

}  // namespace tide
