#pragma once

#include <map>
#include <mutex>
#include <set>
#include <string>
#include <vector>

#include "support/fake_server.h"

namespace quorvelle::testing {

/// What a bucket may do to a request instead of answering it well.
enum class Lie {
    kRedirect,
    kForbidden,
    kServerError,
    /// Declares the object's length and hangs up before its last byte.
    kShortBody,
    /// The object with its first byte changed.
    kWrongBytes,
    /// Bytes without an end.
    kEndlessBody,
};

/// An S3 bucket in memory on a free loopback port. It computes the signature of every
/// request from what came over the wire and refuses one that differs, as it refuses a
/// body that is not the one signed. Objects are read, also unsigned through presigned
/// URLs. All strings are bytes; may be changed while it runs, from any thread.
class FakeBucket {
public:
    static constexpr const char* kRegion = "eu-test-1";
    static constexpr const char* kName = "tide test";
    static constexpr const char* kKeyId = "AKFAKE";
    static constexpr const char* kSecret = "secret/+=";

    FakeBucket();

    /// Base URL without a trailing slash.
    std::string endpoint() const { return server.url().toStdString(); }
    /// A URL that reads the object without a signature.
    std::string presigned(const std::string& key) const;

    void store(const std::string& key, const std::string& bytes);
    std::map<std::string, std::string> objects() const;
    /// From now on every request for this key is lied to.
    void lieAbout(const std::string& key, Lie lie);
    /// Accepts signatures for this region only; FakeBucket::kRegion to begin with.
    void expectRegion(const std::string& region);

    /// "METHOD target status" of every request in order, the target as sent.
    std::vector<std::string> log() const;
    /// How many connections carried them.
    std::size_t connections() const;

private:
    void answer(const httplib::Request& request, httplib::Response& response);
    void answerUnlogged(const httplib::Request& request, httplib::Response& response);
    void answerObject(const std::string& key, httplib::Response& response);
    bool answerLie(const std::string& key, httplib::Response& response);
    std::string expectedAuthorization(const httplib::Request& request) const;

    mutable std::mutex mutex;
    std::map<std::string, std::string> stored;
    std::map<std::string, Lie> lies;
    std::vector<std::string> seen;
    std::set<int> peers;
    std::string region = kRegion;
    /// The last member, for its thread uses the others.
    FakeServer server;
};

}  // namespace quorvelle::testing
