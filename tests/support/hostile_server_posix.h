#pragma once

#include <QByteArray>
#include <mutex>
#include <random>

#include "support/raw_server.h"

namespace quorvelle::testing {

/// A good answer, to be spoilt.
struct GoodReply {
    QByteArray body;
    bool isJson = true;
};

/// A server that answers everything, and spoils its answers: the status, headers, lengths,
/// encodings, types in JSON, the place at which they end. What it does follows from the seed
/// and the order of the requests.
class HostileServer {
public:
    using Answer = std::function<GoodReply(const std::string& target)>;

    /// `elsewhere` is where its redirects lead. Without any it answers well.
    HostileServer(Answer answer, QByteArray elsewhere);

    QString url() const { return server.url(); }

    /// Begins anew with this seed; forgets what was seen.
    void reseed(unsigned seed);
    /// What was done to the answers since then, a word each.
    std::vector<std::string> deeds() const;
    /// All bytes that came since then.
    std::string received() const;

private:
    RawServer::Reply reply(const std::string& request);
    RawServer::Reply spoilt(const GoodReply& good, std::string& deed);
    QByteArray spoiltJson(const QByteArray& body, std::string& deed);
    qsizetype pick(qsizetype size);
    QByteArray oneOf(const QByteArray& list);

    Answer answer;
    QByteArray elsewhere;
    mutable std::mutex mutex;
    std::mt19937 random;
    std::vector<std::string> done;
    std::string seen;
    RawServer server;
};

}  // namespace quorvelle::testing
