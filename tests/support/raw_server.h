#pragma once

#include <QSemaphore>
#include <QString>
#include <QThread>
#include <atomic>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace quorvelle::testing {

/// A server that says exactly the bytes it is told, for replies that no well-behaved
/// server sends. It takes one connection after another on a free loopback port, reads one
/// request from each, replies and closes the connection.
class RawServer {
public:
    enum class Ending {
        kClose,
        kReset,
        kSilence,  ///< waits until the client goes
    };
    struct Reply {
        std::string bytes;
        Ending ending = Ending::kClose;
    };
    /// What is said to a request: its head, and as much of its body as came at once. Called
    /// on the server's thread.
    using Answer = std::function<Reply(const std::string& request)>;

    explicit RawServer(Answer answer);
    /// Says the same to every request.
    explicit RawServer(const std::string& reply, Ending ending = Ending::kClose);
    /// Says one after the other, then nothing more.
    explicit RawServer(const std::vector<std::string>& replies);
    ~RawServer();
    QString url() const { return QStringLiteral("http://127.0.0.1:%1").arg(port); }
    /// How many connections sent a request head so far.
    int served() const { return count; }

private:
    void serve(const Answer& answer);

    int port = 0;
    std::atomic<int> count{0};
    QSemaphore listening;
    std::atomic<bool> ends = false;
    std::unique_ptr<QThread> thread;
};

}  // namespace quorvelle::testing
