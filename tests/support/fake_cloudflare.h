#pragma once

#include <functional>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <vector>

#include "support/fake_server.h"

namespace quorvelle::testing {

/// What goes wrong with a request.
enum class ReplyFault {
    kRefuse,       ///< this one and every later one of the same line
    kGarbage,      ///< done, but for deletions, and answered with a page of text
    kLoseRequest,  ///< not done, and the connection breaks
    kLoseAnswer,   ///< done, but for deletions, and the connection breaks
    kInterrupt,    ///< the client is interrupted meanwhile
};

/// Cloudflare's API with the account "acc" and a bucket "old", and the server that a
/// bucket is made for, in one. Requests are counted from 1.
class FakeCloudflare {
public:
    FakeCloudflare();

    void reset(bool sharedBackups);
    void failAt(std::size_t number, ReplyFault fault);
    /// Makes a listing ("/accounts" and the like) answer with these pages in turn.
    void setPages(const std::string& path, const std::vector<std::string>& pages);

    /// What stands at Cloudflare, as a report has to name it: a token by its id, or by its
    /// name where the client was never told of it. What the client asked for and could not
    /// find out about counts as standing.
    std::set<std::string> left() const;
    std::string connected() const;

    std::function<void()> interrupt;
    FakeServer server;

private:
    using Work = std::function<std::string(const httplib::Request&)>;
    void route(const std::string& method, const std::string& path, Work work);
    void answer(const Work& work, const httplib::Request& request, httplib::Response& response);
    void leaveInDoubt(ReplyFault fault, const Work& work, const httplib::Request& request);

    mutable std::mutex mutex;
    std::map<std::size_t, ReplyFault> faults;
    std::set<std::string> refused;
    std::size_t count = 0;
    bool shared = false;
    std::map<std::string, std::string> tokens;
    int tokensMade = 0;
    std::set<std::string> buckets;
    bool bucketInDoubt = false;
    std::string storage;
};

}  // namespace quorvelle::testing
