#pragma once

#include <QSemaphore>
#include <QString>
#include <QThread>
#include <atomic>
#include <memory>
#include <string>
#include <vector>

namespace quorvelle::testing {

/// A server that says exactly the bytes it is told, for replies that no well-behaved
/// server sends. It takes one connection after another on a free loopback port, reads a
/// request head from each, sends the next reply and closes the connection.
class RawServer {
public:
    enum class Ending { kClose, kReset };

    explicit RawServer(std::vector<std::string> replies, Ending ending = Ending::kClose);
    ~RawServer();
    QString url() const { return QStringLiteral("http://127.0.0.1:%1").arg(port); }
    /// How many connections sent a request head so far.
    int served() const { return count; }

private:
    void serve(const std::vector<std::string>& replies, Ending ending);

    int port = 0;
    std::atomic<int> count{0};
    QSemaphore listening;
    QSemaphore ended;
    std::unique_ptr<QThread> thread;
};

}  // namespace quorvelle::testing
