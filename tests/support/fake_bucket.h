#pragma once

#include <httplib.h>

#include <atomic>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

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
/// body that is not the one signed. Objects can also be read unsigned, through presigned
/// URLs. All strings are bytes; may be changed while it runs, from any thread.
class FakeBucket {
public:
    static constexpr const char* kRegion = "eu-test-1";
    static constexpr const char* kName = "tide test";
    static constexpr const char* kKeyId = "AKFAKE";
    static constexpr const char* kSecret = "secret/+=";

    FakeBucket();
    ~FakeBucket();

    /// Base URL without a trailing slash.
    std::string endpoint() const;
    /// A URL that reads the object without a signature.
    std::string presigned(const std::string& key) const;

    void store(const std::string& key, const std::string& bytes);
    std::map<std::string, std::string> objects() const;
    /// From now on every request for this key is lied to.
    void lieAbout(const std::string& key, Lie lie);
    void setPageSize(std::size_t entries);
    /// Accepts signatures for this region only; FakeBucket::kRegion to begin with.
    void expectRegion(const std::string& region);

    /// "METHOD target status" of every request in order, the target as sent.
    std::vector<std::string> log() const;
    /// How many connections carried them.
    std::size_t connections() const;

private:
    void answer(const httplib::Request& request, httplib::Response& response);
    void answerUnlogged(const httplib::Request& request, httplib::Response& response);
    void answerObject(const httplib::Request& request, const std::string& key,
                      httplib::Response& response);
    bool answerLie(const std::string& key, httplib::Response& response);
    void answerList(const httplib::Request& request, httplib::Response& response) const;
    std::string expectedAuthorization(const httplib::Request& request) const;

    httplib::Server server;
    int port = 0;
    std::thread thread;
    mutable std::mutex mutex;
    std::map<std::string, std::string> stored;
    std::map<std::string, Lie> lies;
    std::vector<std::string> seen;
    std::map<int, int> peers;
    std::string region = kRegion;
    std::size_t pageSize = 1000;
};

}  // namespace quorvelle::testing
