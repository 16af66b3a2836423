#include "support/raw_server.h"

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace quorvelle::testing {

namespace {

void readHead(int connection) {
    std::string head;
    char byte = 0;
    while (head.find("\r\n\r\n") == std::string::npos && ::read(connection, &byte, 1) == 1) {
        head += byte;
    }
}

void sendAll(int connection, const std::string& bytes) {
    std::size_t sent = 0;
    while (sent < bytes.size()) {
        const ssize_t n =
            ::send(connection, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL);
        if (n <= 0) {
            return;
        }
        sent += static_cast<std::size_t>(n);
    }
}

}  // namespace

RawServer::RawServer(std::vector<std::string> replies, Ending ending) {
    listener = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    ::bind(listener, reinterpret_cast<sockaddr*>(&address), size);
    ::listen(listener, 16);
    ::getsockname(listener, reinterpret_cast<sockaddr*>(&address), &size);
    port = ntohs(address.sin_port);
    thread = std::thread([this, replies = std::move(replies), ending] { serve(replies, ending); });
}

RawServer::~RawServer() {
    ::shutdown(listener, SHUT_RDWR);
    thread.join();
    ::close(listener);
}

QString RawServer::url() const {
    return QStringLiteral("http://127.0.0.1:%1").arg(port);
}

void RawServer::serve(const std::vector<std::string>& replies, Ending ending) {
    for (const std::string& reply : replies) {
        const int connection = ::accept(listener, nullptr, nullptr);
        if (connection < 0) {
            return;
        }
        readHead(connection);
        ++count;
        sendAll(connection, reply);
        if (ending == Ending::kReset) {
            const linger hard{1, 0};
            ::setsockopt(connection, SOL_SOCKET, SO_LINGER, &hard, sizeof hard);
        }
        ::close(connection);
    }
}

}  // namespace quorvelle::testing
