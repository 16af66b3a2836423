#include "support/raw_server.h"

#include <httplib.h>

#include "support/platform.h"

namespace quorvelle::testing {

namespace {

void readHead(socket_t connection) {
    std::string head;
    char byte = 0;
    while (head.find("\r\n\r\n") == std::string::npos && ::recv(connection, &byte, 1, 0) == 1) {
        head += byte;
    }
}

void sendAll(socket_t connection, const std::string& bytes) {
    std::size_t sent = 0;
    while (sent < bytes.size()) {
        const std::size_t step = sendSome(connection, bytes.substr(sent));
        if (step == 0) {
            return;
        }
        sent += step;
    }
}

}  // namespace

RawServer::RawServer(std::vector<std::string> replies, Ending ending) {
    listener = newSocket();
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
    endListening(listener, thread);
}

QString RawServer::url() const {
    return QStringLiteral("http://127.0.0.1:%1").arg(port);
}

void RawServer::serve(const std::vector<std::string>& replies, Ending ending) {
    for (const std::string& reply : replies) {
        const socket_t connection = ::accept(listener, nullptr, nullptr);
        if (connection == INVALID_SOCKET) {
            return;
        }
        readHead(connection);
        ++count;
        sendAll(connection, reply);
        if (ending == Ending::kReset) {
            const linger hard{1, 0};
            ::setsockopt(connection, SOL_SOCKET, SO_LINGER, reinterpret_cast<const char*>(&hard),
                         sizeof hard);
        }
        closeSocket(connection);
    }
}

}  // namespace quorvelle::testing
