#include <sys/stat.h>
#include <unistd.h>

#include <QFile>

#include "support/platform.h"

namespace quorvelle::testing {

socket_t newSocket() {
    return ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
}

void closeSocket(socket_t socket) {
    ::close(socket);
}

void endListening(socket_t listener, std::thread& acceptor) {
    ::shutdown(listener, SHUT_RDWR);
    acceptor.join();
    ::close(listener);
}

std::size_t sendSome(socket_t socket, const std::string& bytes) {
    const ssize_t sent = ::send(socket, bytes.data(), bytes.size(), MSG_NOSIGNAL);
    return sent < 0 ? 0 : static_cast<std::size_t>(sent);
}

bool isOwnersAlone(const QString& path) {
    struct stat info = {};
    return ::stat(path.toUtf8().constData(), &info) == 0 && (info.st_mode & 07777U) == 0600U;
}

QString homeFolder(const QString& home) {
    return home;
}

struct Held::Hold {
    QString path;
    QFile::Permissions before;
};

// A directory that may not be written cannot be moved into another one.
Held::Held(const QString& path, From from) : hold(new Hold{path, QFile::permissions(path)}) {
    const QFile::Permissions reading = QFile::ReadOwner | QFile::ExeOwner;
    QFile::setPermissions(path, from == From::kMoves ? reading : QFile::Permissions());
}

Held::~Held() {
    QFile::setPermissions(hold->path, hold->before);
}

}  // namespace quorvelle::testing
