#include "tide/store/s3_provider.h"

#include <ctime>
#include <string_view>
#include <utility>

#include "tide/error.h"
#include "tide/limits.h"
#include "tide/store/list_page.h"
#include "tide/store/sigv4.h"
#include "tide/store/transfer.h"
#include "tide/store/url_encode.h"

namespace tide {

namespace {

// How much of a refusal's reply an error text shows.
constexpr std::size_t kMaxDetail = 1024;

std::string hostOf(const std::string& endpoint) {
    const std::size_t scheme = endpoint.find("://");
    const std::size_t begin = scheme == std::string::npos ? 0 : scheme + 3;
    return endpoint.substr(begin, endpoint.find('/', begin) - begin);
}

std::uint64_t maxBodyOf(const std::string& key) {
    if (key.empty()) {
        return kMaxListPageBytes;
    }
    return std::string_view(key).starts_with("chunks/") ? kMaxChunkBytes : kMaxBodyBytes;
}

bool failListing(std::string* err, long status, const std::string& detail) {
    return fail(err, "LIST -> HTTP ", std::to_string(status), " ", detail.substr(0, kMaxDetail));
}

}  // namespace

S3Provider::S3Provider(BucketAccess bucketAccess, ConnectionCache* connections)
    : access(std::move(bucketAccess)), connectionCache(connections) {
    while (access.endpoint.ends_with('/')) {
        access.endpoint.pop_back();
    }
    if (access.region.empty()) {
        access.region = "auto";
    }
}

bool S3Provider::request(const std::string& method, const std::string& key,
                         const std::string& query, const std::string& payload, std::string& body,
                         long& status, std::uint64_t* size, std::string* err) {
    const std::string bucketUri = '/' + urlEncode(access.bucket, true);
    const std::string uri = key.empty() ? bucketUri : bucketUri + '/' + urlEncode(key, false);
    const SigningInput input{.method = method,
                             .host = hostOf(access.endpoint),
                             .canonicalUri = uri,
                             .canonicalQuery = query,
                             .payloadHash = sha256Hex(payload),
                             .region = access.region,
                             .accessKeyId = access.accessKeyId,
                             .secretAccessKey = access.secretAccessKey,
                             .now = std::time(nullptr)};
    const Signature signature = signRequest(input);

    Transfer transfer(access.endpoint + uri + (query.empty() ? "" : '?' + query), maxBodyOf(key),
                      connectionCache);
    transfer.keepPath();
    transfer.addHeader("Host: " + input.host);
    transfer.addHeader("x-amz-content-sha256: " + input.payloadHash);
    transfer.addHeader("x-amz-date: " + signature.amzDate);
    transfer.addHeader("Authorization: " + signature.authorization);
    transfer.addHeader("Expect:");
    if (method == "PUT") {
        transfer.makePut(payload);
    } else if (method == "HEAD") {
        transfer.makeHead();
    } else if (method == "DELETE") {
        transfer.makeDelete();
    }
    if (!transfer.perform(err)) {
        return false;
    }
    status = transfer.status();
    body = std::move(transfer.body);
    if (size != nullptr) {
        *size = transfer.declaredLength();
    }
    return true;
}

bool S3Provider::objectRequest(const std::string& method, const std::string& key,
                               const std::string& payload, std::string& body, std::uint64_t* size,
                               std::string* err) {
    long status = 0;
    return request(method, key, {}, payload, body, status, size, err) &&
           (isSuccess(status) || fail(err, method, " ", key, " -> HTTP ", std::to_string(status)));
}

bool S3Provider::put(const std::string& key, const std::string& body, std::string* err) {
    std::string reply;
    return objectRequest("PUT", key, body, reply, nullptr, err);
}

bool S3Provider::get(const std::string& key, std::string& body, std::string* err) {
    std::string reply;
    if (!objectRequest("GET", key, {}, reply, nullptr, err)) {
        return false;
    }
    body = std::move(reply);
    return true;
}

bool S3Provider::head(const std::string& key, std::uint64_t* size, std::string* err) {
    std::string reply;
    std::uint64_t length = 0;
    if (!objectRequest("HEAD", key, {}, reply, &length, err)) {
        return false;
    }
    if (size != nullptr) {
        *size = length;
    }
    return true;
}

bool S3Provider::remove(const std::string& key, std::string* err) {
    std::string reply;
    return objectRequest("DELETE", key, {}, reply, nullptr, err);
}

bool S3Provider::list(const std::string& prefix, std::vector<ObjectEntry>& entries,
                      std::string* err) {
    std::vector<ObjectEntry> found;
    std::string token;
    for (;;) {
        std::string body;
        long status = 0;
        if (!request("GET", {}, listQuery(prefix, token), {}, body, status, nullptr, err)) {
            return false;
        }
        if (!isSuccess(status)) {
            return failListing(err, status, body);
        }
        ListPage page = parseListPage(body);
        found.insert(found.end(), std::make_move_iterator(page.entries.begin()),
                     std::make_move_iterator(page.entries.end()));
        if (!page.truncated) {
            break;
        }
        if (page.nextToken.empty() || page.nextToken == token) {
            return failListing(err, status, "the page is truncated but names no next one");
        }
        token = std::move(page.nextToken);
    }
    entries = std::move(found);
    return true;
}

}  // namespace tide
