#include "support/raw_server.h"

#include <httplib.h>

#include <QTcpServer>
#include <QTcpSocket>

namespace quorvelle::testing {

RawServer::RawServer(Answer answer)
    : thread(QThread::create([this, answer = std::move(answer)] { serve(answer); })) {
    thread->start();
    listening.acquire();
}

RawServer::RawServer(const std::string& reply, Ending ending)
    : RawServer([=](const std::string&) {
          return Reply{reply, ending};
      }) {}

RawServer::RawServer(const std::vector<std::string>& replies)
    : RawServer([replies, next = std::size_t{0}](const std::string&) mutable {
          return next < replies.size() ? Reply{replies[next++]} : Reply{{}, Ending::kSilence};
      }) {}

RawServer::~RawServer() {
    ends = true;
    thread->wait();
}

void RawServer::serve(const Answer& answer) {
    QTcpServer server;
    server.listen(QHostAddress::LocalHost);
    port = server.serverPort();
    listening.release();
    while (!ends) {
        // Qt may have accepted two at once, and then waits for a third.
        if (!server.hasPendingConnections() && !server.waitForNewConnection(20)) {
            continue;
        }
        const std::unique_ptr<QTcpSocket> connection(server.nextPendingConnection());
        QByteArray request;
        const auto readMore = [&](int ms) {
            const bool came = connection->waitForReadyRead(ms);
            request += connection->readAll();
            return came;
        };
        while (!request.contains("\r\n\r\n") && !ends &&
               (readMore(20) || connection->state() == QTcpSocket::ConnectedState)) {
        }
        while (readMore(5)) {
        }
        ++count;
        const auto [bytes, ending] = answer(request.toStdString());
        connection->write(bytes.data(), qint64(bytes.size()));
        while (connection->bytesToWrite() > 0 && connection->waitForBytesWritten(-1)) {
        }
        while (ending == Ending::kSilence && !ends &&
               connection->state() == QTcpSocket::ConnectedState) {
            connection->waitForDisconnected(20);
        }
        if (ending == Ending::kReset) {
            const linger hard{1, 0};
            ::setsockopt(static_cast<socket_t>(connection->socketDescriptor()), SOL_SOCKET,
                         SO_LINGER, reinterpret_cast<const char*>(&hard), sizeof hard);
        }
        connection->abort();
    }
}

}  // namespace quorvelle::testing
