#include "support/raw_server.h"

#include <httplib.h>

#include <QTcpServer>
#include <QTcpSocket>

namespace quorvelle::testing {

RawServer::RawServer(std::vector<std::string> replies, Ending ending)
    : thread(QThread::create(
          [this, replies = std::move(replies), ending] { serve(replies, ending); })) {
    thread->start();
    listening.acquire();
}

RawServer::~RawServer() {
    ended.release();
    thread->wait();
}

void RawServer::serve(const std::vector<std::string>& replies, Ending ending) {
    QTcpServer server;
    server.listen(QHostAddress::LocalHost);
    port = server.serverPort();
    listening.release();
    for (const std::string& reply : replies) {
        // Qt may have accepted two at once, and then waits for a third.
        while (!server.hasPendingConnections() && !server.waitForNewConnection(20)) {
            if (ended.available() > 0) {
                return;
            }
        }
        const std::unique_ptr<QTcpSocket> connection(server.nextPendingConnection());
        QByteArray head;
        while (!head.contains("\r\n\r\n") && connection->waitForReadyRead(-1)) {
            head += connection->readAll();
        }
        ++count;
        connection->write(reply.data(), qint64(reply.size()));
        while (connection->bytesToWrite() > 0 && connection->waitForBytesWritten(-1)) {
        }
        if (ending == Ending::kReset) {
            const linger hard{1, 0};
            ::setsockopt(static_cast<socket_t>(connection->socketDescriptor()), SOL_SOCKET,
                         SO_LINGER, reinterpret_cast<const char*>(&hard), sizeof hard);
        }
        connection->abort();
    }
    ended.acquire();
}

}  // namespace quorvelle::testing
