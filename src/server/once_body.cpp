#include "server/once_body.h"

#include <algorithm>

namespace quorvelle {

OnceBody::OnceBody(const QByteArray& content) : bytes(content) {
    open(QIODevice::ReadOnly | QIODevice::Unbuffered);
}

qint64 OnceBody::bytesAvailable() const {
    return bytes.size() - taken + QIODevice::bytesAvailable();
}

qint64 OnceBody::readData(char* target, qint64 most) {
    const qint64 count = std::min<qint64>(most, bytes.size() - taken);
    if (count <= 0) {
        return -1;
    }
    std::copy_n(bytes.constData() + taken, count, target);
    taken += count;
    return count;
}

qint64 OnceBody::writeData(const char*, qint64) {
    return -1;
}

}  // namespace quorvelle
