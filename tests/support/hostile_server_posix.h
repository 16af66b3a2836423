#pragma once

#include <QByteArray>
#include <QString>
#include <atomic>
#include <functional>
#include <mutex>
#include <random>
#include <string>
#include <thread>
#include <vector>

namespace quorvelle::testing {

/// A good answer, to be spoilt.
struct GoodReply {
    QByteArray body;
    bool isJson = true;
};

/// A server on a free loopback port that answers everything, and spoils its answers: the
/// status, headers, lengths, encodings, types in JSON, the place at which they end. What it
/// does follows from the seed and the order of the requests.
class HostileServer {
public:
    using Answer = std::function<GoodReply(const std::string& target)>;

    /// `elsewhere` is where its redirects lead. Without any it answers well.
    HostileServer(Answer answer, QByteArray elsewhere);
    ~HostileServer();

    QString url() const { return QStringLiteral("http://127.0.0.1:%1").arg(port); }

    /// Begins anew with this seed; forgets what was seen.
    void reseed(unsigned seed);
    /// What was done to the answers since then, a word each.
    std::vector<std::string> deeds() const;
    /// All bytes that came since then.
    std::string received() const;

private:
    void accept();
    void serve(int connection);
    QByteArray spoilt(const GoodReply& good, std::string& deed, int& ending);
    QByteArray spoiltJson(const QByteArray& body, std::string& deed);

    Answer answer;
    QByteArray elsewhere;
    int listener = -1;
    int port = 0;
    std::atomic<bool> ends = false;
    mutable std::mutex mutex;
    std::mt19937 random;
    std::vector<std::string> done;
    std::string seen;
    std::atomic<int> connections = 0;
    std::thread acceptor;
};

}  // namespace quorvelle::testing
