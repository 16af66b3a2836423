#include <fcntl.h>
#include <unistd.h>

#include <system_error>

#include "tide/disk.h"

namespace tide {

bool isRealDirectory(const std::filesystem::path& path) {
    std::error_code error;
    return std::filesystem::symlink_status(path, error).type() ==
           std::filesystem::file_type::directory;
}

bool isUnsharedFile(const std::filesystem::path& path) {
    std::error_code error;
    return std::filesystem::symlink_status(path, error).type() ==
               std::filesystem::file_type::regular &&
           std::filesystem::hard_link_count(path, error) == 1;
}

bool flushToDisk(const std::filesystem::path& file) {
    const int descriptor = ::open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW);
    if (descriptor < 0) {
        return false;
    }
    const bool flushed = ::fsync(descriptor) == 0;
    ::close(descriptor);
    return flushed;
}

bool shareFile(const std::filesystem::path& file, const std::filesystem::path& name) {
    std::error_code error;
    std::filesystem::create_hard_link(file, name, error);
    return !error;
}

}  // namespace tide
