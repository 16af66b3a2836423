#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "tide/limits.h"
#include "tide/sleep.h"

namespace tide {

/// What the transfers of one run share: open connections, TLS sessions and DNS answers.
/// Used by one thread at a time; it outlives every transfer and provider it is given to.
class ConnectionCache {
public:
    ConnectionCache();
    ~ConnectionCache();
    ConnectionCache(const ConnectionCache&) = delete;
    ConnectionCache& operator=(const ConnectionCache&) = delete;

private:
    friend class Transfer;
    struct Share;
    std::unique_ptr<Share> share;
};

/// How a plain GET is made.
struct HttpOptions {
    /// A longer reply ends the transfer as failed. In bytes.
    std::uint64_t maxBody = kMaxBodyBytes;
    /// Borrowed; null makes a connection of its own.
    ConnectionCache* connections = nullptr;
    /// Refuses redirects away from TLS.
    bool httpsOnly = false;
    /// Waits between two attempts.
    Sleep sleep = sleepFor;
};

/// GETs an http or https URL, following up to 30 redirects to such URLs, without a time
/// limit but those of network(). Tries up to three times: when the connection breaks, after
/// 0.5 s and 1 s, and when a status 429, 502, 503 or 504 says when to come back
/// (Retry-After, at most 10 s are waited). What comes of the last attempt is told. True when the
/// transfer completed, whatever the HTTP status: then `body` and `status` are those of the last
/// reply, and the caller judges the status. On failure `err`, unless null, is assigned "curl:
/// <reason>" (or another as Transfer::perform) and the other out-parameters keep what they held.
///
/// A non-empty bearer token is sent to the URL's own origin alone: a redirect to another
/// host or port does not carry it.
bool httpGet(const std::string& url, std::string& body, long& status, std::string* err,
             const std::string& bearerToken = {}, const HttpOptions& options = {});

/// Whether a status is a success: 200 to 299.
constexpr bool isSuccess(long status) {
    return status / 100 == 2;
}

}  // namespace tide
