#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "tide/store/http.h"

namespace tide {

/// One HTTP transfer on a libcurl handle of its own; what httpGet and S3Provider have in
/// common. Set it up, perform() it once on the same thread, read the reply. Accepts http
/// and https alone.
class Transfer {
public:
    /// A reply longer than `maxBody` bytes ends the transfer as failed. `connections` is
    /// borrowed and may be null.
    Transfer(const std::string& url, std::uint64_t maxBody, ConnectionCache* connections);
    ~Transfer();
    Transfer(const Transfer&) = delete;
    Transfer& operator=(const Transfer&) = delete;

    /// Follows up to 30 redirects, with `httpsOnly` to https alone. Headers of addHeader
    /// stay with the first origin.
    void followRedirects(bool httpsOnly);
    /// Ends the transfer as failed when it moves no byte for the time of network().
    void limitIdleTime();
    /// Sends the path with its "." and ".." parts as they are: a signature covers it.
    void keepPath();
    /// Adds a request header line, "Name: value"; "Name:" suppresses one of libcurl's.
    void addHeader(const std::string& line);

    /// The method, GET unless one of these is called. The payload must outlive perform().
    void makePut(const std::string& payload);
    void makeHead();
    void makeDelete();

    /// Whether the transfer completed, whatever the status. On failure `err`, unless
    /// null, is assigned "curl: <reason>", "curl init failed", or why network() has no way to
    /// the address.
    bool perform(std::string* err);

    /// Whether a transfer that did not complete had its connection broken, so that another
    /// attempt may do better.
    bool connectionBroke() const;

    /// The reply, valid after perform() returned true. The body may be moved out.
    std::string body;
    long status() const;
    /// The length in bytes that the reply declares, 0 when it declares none.
    std::uint64_t declaredLength() const;
    /// When to ask again, where the reply says so (Retry-After).
    std::optional<std::chrono::seconds> retryAfter() const;

private:
    struct Handle;
    bool chooseRoute(std::string* err);
    bool performOnce(std::string* err);
    void redirectTo(const std::string& target);
    std::string timeOutText() const;
    /// The status of a proxy that would not open a tunnel, 0 for none.
    long proxyRefusal() const;

    std::unique_ptr<Handle> handle;
};

}  // namespace tide
