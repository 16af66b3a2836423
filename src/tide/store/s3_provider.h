#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tide/store/http.h"
#include "tide/store/storage_provider.h"

namespace tide {

/// What it takes to reach an S3-compatible bucket.
struct BucketAccess {
    /// "https://" (or "http://") and the host with its port, if any; no path. Slashes at
    /// the end do no harm.
    std::string endpoint;
    /// Empty means "auto".
    std::string region;
    std::string bucket;
    std::string accessKeyId;
    std::string secretAccessKey;
};

/// A bucket behind the S3 API, addressed by path and signed with AWS Signature
/// Version 4. Requests follow no redirects, have no time limit and are not retried.
///
/// Failures read "curl: <reason>" when the transfer broke, "<METHOD> <key> -> HTTP
/// <status>" when the store refused an object, and "LIST -> HTTP <status> <beginning of
/// the reply>" when it refused a listing.
class S3Provider : public StorageProvider {
public:
    /// `connections` is borrowed and may be null; it must outlive the provider.
    explicit S3Provider(BucketAccess bucketAccess, ConnectionCache* connections = nullptr);

    bool put(const std::string& key, const std::string& body, std::string* err) override;
    bool get(const std::string& key, std::string& body, std::string* err) override;
    bool head(const std::string& key, std::uint64_t* size, std::string* err) override;
    bool list(const std::string& prefix, std::vector<ObjectEntry>& entries,
              std::string* err) override;
    bool remove(const std::string& key, std::string* err) override;

    /// One signed request: "GET", "PUT", "HEAD" or "DELETE" of a key, or GET of the
    /// bucket itself with an empty key and a query that is already encoded and sorted.
    /// True when the transfer completed, whatever the HTTP status; then `body` and
    /// `status` hold the reply and `size`, unless null, its declared length in bytes.
    bool request(const std::string& method, const std::string& key, const std::string& query,
                 const std::string& payload, std::string& body, long& status, std::uint64_t* size,
                 std::string* err);

private:
    bool objectRequest(const std::string& method, const std::string& key,
                       const std::string& payload, std::string& body, std::uint64_t* size,
                       std::string* err);

    BucketAccess access;
    ConnectionCache* connectionCache;
};

}  // namespace tide
