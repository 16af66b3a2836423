#include "files/descriptor_posix.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

namespace files::posix {

bool writeAll(int descriptor, const char* bytes, std::size_t size) {
    std::size_t done = 0;
    while (done < size) {
        const ssize_t written = ::write(descriptor, bytes + done, size - done);
        if (written < 0 && errno != EINTR) {
            return false;
        }
        done += written > 0 ? static_cast<std::size_t>(written) : 0;
    }
    return true;
}

bool flush(int descriptor) {
    return ::fsync(descriptor) == 0 || errno == EINVAL || errno == ENOTSUP || errno == ENOSYS;
}

void beginFlush(int descriptor) {
    ::sync_file_range(descriptor, 0, 0, SYNC_FILE_RANGE_WRITE);
}

}  // namespace files::posix
