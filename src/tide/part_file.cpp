#include "tide/part_file.h"

#include <optional>

#include "files/disk.h"

namespace tide {

namespace {

/// So much is worth a call.
constexpr std::uint64_t kFlushStep = std::uint64_t{8} << 20;

}  // namespace

PartFile::PartFile(const std::filesystem::path& place, files::RawFile::For purpose,
                   std::uint64_t kept)
    : path(place), file(place, purpose), written(kept), sent(kept), resumed(kept > 0) {}

PartFile PartFile::create(const std::filesystem::path& path) {
    return PartFile(path, files::RawFile::For::kWritingAnew, 0);
}

PartFile PartFile::resume(const std::filesystem::path& path, std::uint64_t kept) {
    return PartFile(path, files::RawFile::For::kWriting, kept);
}

bool PartFile::append(std::string_view bytes) {
    const bool done = file.write(written, bytes);
    written += bytes.size();
    if (written - sent >= kFlushStep) {
        file.beginFlush();
        sent = written;
    }
    return done;
}

bool PartFile::close() {
    if (!resumed) {
        return file.close();
    }
    const std::optional<std::uint64_t> size = files::fileSize(path);
    const bool isCut = size && (*size <= written || file.cutOff(written));
    return file.close() && isCut;
}

}  // namespace tide
