#include "tide/store/transfer.h"

#include <curl/curl.h>

#include <algorithm>
#include <cstdio>
#include <new>

#include "tide/error.h"
#include "tide/limits.h"
#include "tide/store/network.h"

namespace tide {

struct ConnectionCache::Share {
    CURLSH* handle = curl_share_init();
};

ConnectionCache::ConnectionCache() : share(std::make_unique<Share>()) {
    curl_share_setopt(share->handle, CURLSHOPT_SHARE, CURL_LOCK_DATA_CONNECT);
    curl_share_setopt(share->handle, CURLSHOPT_SHARE, CURL_LOCK_DATA_SSL_SESSION);
    curl_share_setopt(share->handle, CURLSHOPT_SHARE, CURL_LOCK_DATA_DNS);
}

ConnectionCache::~ConnectionCache() {
    curl_share_cleanup(share->handle);
}

namespace {

constexpr int kMaxRedirects = 30;
constexpr const char* kSchemes = "http,https";
constexpr const char* kUserAgent = "quorvelle-tide/0.1";

constexpr long kKeepAliveSeconds = 60;

// What goes through libcurl's callbacks.
struct Streams {
    CURL* easy = nullptr;
    std::string* body = nullptr;
    std::uint64_t maxBody = 0;
    std::uint64_t headerBytes = 0;
    const std::string* payload = nullptr;
    std::size_t sent = 0;
};

/// As far as the headers tell it; else 0.
std::uint64_t lengthOf(CURL* easy) {
    curl_off_t length = -1;
    curl_easy_getinfo(easy, CURLINFO_CONTENT_LENGTH_DOWNLOAD_T, &length);
    return length < 0 ? 0 : static_cast<std::uint64_t>(length);
}

// Any return value but the number of bytes ends the transfer as failed.
std::size_t receive(const char* bytes, std::size_t, std::size_t count, void* context) noexcept {
    const auto& streams = *static_cast<Streams*>(context);
    if (count > streams.maxBody - streams.body->size()) {
        return 0;
    }
    try {
        if (streams.body->empty()) {
            // Grown step by step, a large body would take up to twice its size for a while.
            streams.body->reserve(
                static_cast<std::size_t>(std::min(lengthOf(streams.easy), streams.maxBody)));
        }
        streams.body->append(bytes, count);
    } catch (const std::bad_alloc&) {
        return 0;
    }
    return count;
}

// Headers of interim answers and trailers count as well: any of them could go on for ever.
std::size_t receiveHeader(const char*, std::size_t, std::size_t count, void* context) noexcept {
    auto& streams = *static_cast<Streams*>(context);
    streams.headerBytes += count;
    return streams.headerBytes > kMaxHeaderBytes ? 0 : count;
}

std::size_t send(char* buffer, std::size_t size, std::size_t count, void* context) noexcept {
    auto& streams = *static_cast<Streams*>(context);
    const std::size_t length = streams.payload->copy(buffer, size * count, streams.sent);
    streams.sent += length;
    return length;
}

// A connection that was kept open may turn out dead only once the body is on its way.
int rewind(void* context, curl_off_t offset, int origin) noexcept {
    auto& streams = *static_cast<Streams*>(context);
    if (origin != SEEK_SET || static_cast<std::size_t>(offset) > streams.payload->size()) {
        return CURL_SEEKFUNC_CANTSEEK;
    }
    streams.sent = static_cast<std::size_t>(offset);
    return CURL_SEEKFUNC_OK;
}

// Scheme, host and port; of what is no URL, nothing.
std::string originOf(const std::string& url) {
    const std::unique_ptr<CURLU, decltype(&curl_url_cleanup)> parts(curl_url(), &curl_url_cleanup);
    std::string origin;
    if (curl_url_set(parts.get(), CURLUPART_URL, url.c_str(), 0) == CURLUE_OK) {
        for (const CURLUPart part : {CURLUPART_SCHEME, CURLUPART_HOST, CURLUPART_PORT}) {
            char* text = nullptr;
            curl_url_get(parts.get(), part, &text, CURLU_DEFAULT_PORT);
            origin += ' ';
            origin += text == nullptr ? "" : text;
            curl_free(text);
        }
    }
    return origin;
}

}  // namespace

struct Transfer::Handle {
    CURL* easy = curl_easy_init();
    curl_slist* headers = nullptr;
    Streams streams;
    CURLcode result = CURLE_OK;
    std::string url;
    bool follows = false;
    const char* redirectSchemes = kSchemes;

    ~Handle() {
        dropHeaders();
        curl_easy_cleanup(easy);
    }

    void dropHeaders() {
        curl_slist_free_all(headers);
        headers = nullptr;
    }
};

Transfer::Transfer(const std::string& url, std::uint64_t maxBody, ConnectionCache* connections)
    : handle(std::make_unique<Handle>()) {
    CURL* easy = handle->easy;
    if (easy == nullptr) {
        return;
    }
    handle->streams.easy = easy;
    handle->streams.body = &body;
    handle->streams.maxBody = maxBody;
    handle->url = url;
    curl_easy_setopt(easy, CURLOPT_PROTOCOLS_STR, kSchemes);
    // It knows which proxies by itself, from variables that are not all of those that count.
    curl_easy_setopt(easy, CURLOPT_PROXY, "");
    curl_easy_setopt(easy, CURLOPT_NOPROXY, "");
    curl_easy_setopt(easy, CURLOPT_USERAGENT, kUserAgent);
    curl_easy_setopt(easy, CURLOPT_NOPROGRESS, 1L);
    // The process ignores SIGPIPE; to make sure of it around every call takes a third of a small
    // transfer's system calls. Nor are signals for a thread beside others.
    curl_easy_setopt(easy, CURLOPT_NOSIGNAL, 1L);
    // Windows asks whether certificates were revoked, which fails for those of a private
    // authority that publishes no list; other platforms never ask.
    curl_easy_setopt(easy, CURLOPT_SSL_OPTIONS, static_cast<long>(CURLSSLOPT_REVOKE_BEST_EFFORT));
    curl_easy_setopt(easy, CURLOPT_CONNECTTIMEOUT,
                     static_cast<long>(network().connectLimit.count()));
    // A peer that vanished would otherwise be waited for until the process ends.
    curl_easy_setopt(easy, CURLOPT_TCP_KEEPALIVE, 1L);
    curl_easy_setopt(easy, CURLOPT_TCP_KEEPIDLE, kKeepAliveSeconds);
    curl_easy_setopt(easy, CURLOPT_TCP_KEEPINTVL, kKeepAliveSeconds);
    curl_easy_setopt(easy, CURLOPT_HEADERFUNCTION, &receiveHeader);
    curl_easy_setopt(easy, CURLOPT_HEADERDATA, &handle->streams);
    curl_easy_setopt(easy, CURLOPT_WRITEFUNCTION, &receive);
    curl_easy_setopt(easy, CURLOPT_WRITEDATA, &handle->streams);
    if (connections != nullptr) {
        curl_easy_setopt(easy, CURLOPT_SHARE, connections->share->handle);
    }
}

Transfer::~Transfer() = default;

void Transfer::followRedirects(bool httpsOnly) {
    handle->follows = true;
    handle->redirectSchemes = httpsOnly ? "https" : kSchemes;
}

void Transfer::limitIdleTime() {
    curl_easy_setopt(handle->easy, CURLOPT_LOW_SPEED_LIMIT, 1L);
    curl_easy_setopt(handle->easy, CURLOPT_LOW_SPEED_TIME,
                     static_cast<long>(network().idleLimit.count()));
}

void Transfer::keepPath() {
    curl_easy_setopt(handle->easy, CURLOPT_PATH_AS_IS, 1L);
}

void Transfer::addHeader(const std::string& line) {
    curl_slist* extended = curl_slist_append(handle->headers, line.c_str());
    if (extended == nullptr) {
        throw std::bad_alloc();
    }
    handle->headers = extended;
}

void Transfer::makePut(const std::string& payload) {
    CURL* easy = handle->easy;
    handle->streams.payload = &payload;
    curl_easy_setopt(easy, CURLOPT_UPLOAD, 1L);
    curl_easy_setopt(easy, CURLOPT_READFUNCTION, &send);
    curl_easy_setopt(easy, CURLOPT_READDATA, &handle->streams);
    curl_easy_setopt(easy, CURLOPT_SEEKFUNCTION, &rewind);
    curl_easy_setopt(easy, CURLOPT_SEEKDATA, &handle->streams);
    curl_easy_setopt(easy, CURLOPT_INFILESIZE_LARGE, static_cast<curl_off_t>(payload.size()));
}

void Transfer::makeHead() {
    curl_easy_setopt(handle->easy, CURLOPT_NOBODY, 1L);
}

void Transfer::makeDelete() {
    curl_easy_setopt(handle->easy, CURLOPT_CUSTOMREQUEST, "DELETE");
}

bool Transfer::perform(std::string* err) {
    if (handle->easy == nullptr) {
        return fail(err, "curl init failed");
    }
    // Not left to libcurl, for each address has a proxy of its own.
    for (int redirects = 0;; ++redirects) {
        if (!performOnce(err)) {
            return false;
        }
        char* target = nullptr;
        curl_easy_getinfo(handle->easy, CURLINFO_REDIRECT_URL, &target);
        if (!handle->follows || target == nullptr) {
            return true;
        }
        if (redirects == kMaxRedirects) {
            handle->result = CURLE_TOO_MANY_REDIRECTS;
            return fail(err, "curl: ", curl_easy_strerror(handle->result));
        }
        redirectTo(target);
    }
}

void Transfer::redirectTo(const std::string& target) {
    if (originOf(target) != originOf(handle->url)) {
        handle->dropHeaders();
    }
    handle->url = target;
    curl_easy_setopt(handle->easy, CURLOPT_PROTOCOLS_STR, handle->redirectSchemes);
    body.clear();
    handle->streams.headerBytes = 0;
}

bool Transfer::chooseRoute(std::string* err) {
    if (!network().routeTo) {
        return true;
    }
    Route route = network().routeTo(handle->url);
    if (!route.problem.empty()) {
        handle->result = CURLE_COULDNT_CONNECT;
        return fail(err, route.problem);
    }
    curl_easy_setopt(handle->easy, CURLOPT_PROXY, route.proxy.c_str());
    if (!route.authorities.empty()) {
        curl_blob pem{route.authorities.data(), route.authorities.size(), CURL_BLOB_COPY};
        curl_easy_setopt(handle->easy, CURLOPT_CAINFO_BLOB, &pem);
    }
    return true;
}

bool Transfer::performOnce(std::string* err) {
    if (!chooseRoute(err)) {
        return false;
    }
    curl_easy_setopt(handle->easy, CURLOPT_URL, handle->url.c_str());
    curl_easy_setopt(handle->easy, CURLOPT_HTTPHEADER, handle->headers);
    handle->result = curl_easy_perform(handle->easy);
    if (handle->streams.headerBytes > kMaxHeaderBytes) {
        // What libcurl makes of the refusal depends on where in the reply it met it.
        handle->result = CURLE_WRITE_ERROR;
    }
    if (handle->result == CURLE_OPERATION_TIMEDOUT) {
        return fail(err, "curl: ", timeOutText());
    }
    if (const long refusal = proxyRefusal(); refusal != 0) {
        return fail(err, "curl: the proxy answered HTTP ", std::to_string(refusal));
    }
    return handle->result == CURLE_OK || fail(err, "curl: ", curl_easy_strerror(handle->result));
}

long Transfer::proxyRefusal() const {
    long code = 0;
    curl_easy_getinfo(handle->easy, CURLINFO_HTTP_CONNECTCODE, &code);
    return handle->result == CURLE_OK || code < 300 ? 0 : code;
}

std::string Transfer::timeOutText() const {
    curl_off_t ready = 0;
    curl_easy_getinfo(handle->easy, CURLINFO_PRETRANSFER_TIME_T, &ready);
    return ready > 0
               ? "no data for " + std::to_string(network().idleLimit.count()) + " s"
               : "no connection within " + std::to_string(network().connectLimit.count()) + " s";
}

bool Transfer::connectionBroke() const {
    if (proxyRefusal() != 0) {
        return false;
    }
    return handle->result == CURLE_RECV_ERROR || handle->result == CURLE_SEND_ERROR ||
           handle->result == CURLE_GOT_NOTHING || handle->result == CURLE_PARTIAL_FILE;
}

long Transfer::status() const {
    long code = 0;
    curl_easy_getinfo(handle->easy, CURLINFO_RESPONSE_CODE, &code);
    return code;
}

std::optional<std::chrono::seconds> Transfer::retryAfter() const {
    curl_header* found = nullptr;
    if (curl_easy_header(handle->easy, "Retry-After", 0, CURLH_HEADER, -1, &found) != CURLHE_OK) {
        return std::nullopt;
    }
    curl_off_t seconds = 0;
    curl_easy_getinfo(handle->easy, CURLINFO_RETRY_AFTER, &seconds);
    return std::chrono::seconds(seconds);
}

std::uint64_t Transfer::declaredLength() const {
    return lengthOf(handle->easy);
}

}  // namespace tide
