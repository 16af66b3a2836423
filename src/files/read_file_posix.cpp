#include <fcntl.h>
#include <unistd.h>

#include <QFile>
#include <array>
#include <cerrno>
#include <cstring>

#include "files/read_file.h"

namespace quorvelle {

namespace {

FileContent unreadable(int error) {
    return {.outcome = FileContent::Outcome::kUnreadable,
            .reason = QString::fromLocal8Bit(std::strerror(error))};
}

}  // namespace

FileContent readWhole(const QString& path, files::WhenInUse) {
    const int descriptor = ::open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC);
    if (descriptor < 0) {
        return errno == ENOENT || errno == ENOTDIR ? FileContent() : unreadable(errno);
    }
    FileContent content{.outcome = FileContent::Outcome::kRead};
    std::array<char, 65536> block{};
    ssize_t size = 0;
    while ((size = ::read(descriptor, block.data(), block.size())) > 0 ||
           (size < 0 && errno == EINTR)) {
        content.bytes.append(block.data(), qMax(size, ssize_t{0}));
    }
    const int error = errno;
    ::close(descriptor);
    return size == 0 ? content : unreadable(error);
}

}  // namespace quorvelle
