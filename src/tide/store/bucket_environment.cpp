#include "tide/store/bucket_environment.h"

#include <cstdlib>
#include <utility>

#include "tide/error.h"

namespace tide {

namespace {

// Stands where a bucket is not configured, or not so that it could be asked.
class NoBucket : public StorageProvider {
public:
    explicit NoBucket(std::string why) : reason(std::move(why)) {}

    bool put(const std::string&, const std::string&, std::string* err) override {
        return refuse(err);
    }
    bool get(const std::string&, std::string&, std::string* err) override { return refuse(err); }
    bool head(const std::string&, std::uint64_t*, std::string* err) override { return refuse(err); }
    bool list(const std::string&, std::vector<ObjectEntry>&, std::string* err) override {
        return refuse(err);
    }
    bool remove(const std::string&, std::string* err) override { return refuse(err); }

private:
    bool refuse(std::string* err) { return fail(err, reason); }

    const std::string reason;
};

constexpr const char* kNoCredentials =
    "no chunk URLs and no bucket credentials (TIDE_S3_ENDPOINT, TIDE_S3_BUCKET, TIDE_S3_KEY, "
    "TIDE_S3_SECRET)";

// Without what may be a password.
std::string shown(const std::string& endpoint) {
    const std::size_t user = endpoint.rfind('@');
    const std::size_t scheme = endpoint.find("://");
    const std::size_t begin = scheme == std::string::npos ? 0 : scheme + 3;
    return user == std::string::npos || user < begin
               ? endpoint
               : endpoint.substr(0, begin) + "***" + endpoint.substr(user);
}

std::string environmentVariable(const char* name) {
    const char* value = std::getenv(name);
    return value == nullptr ? std::string() : value;
}

}  // namespace

std::optional<std::string> bucketEndpoint(std::string text) {
    if (text.find("://") == std::string::npos) {
        text.insert(0, "https://");
    }
    const std::size_t host = text.find("://") + 3;
    while (text.size() > host && text.ends_with('/')) {
        text.pop_back();
    }
    if (host == text.size() || text.find_first_of("/?#@\\", host) != std::string::npos) {
        return std::nullopt;
    }
    return text;
}

std::optional<BucketAccess> bucketAccessFrom(const ReadVariable& read) {
    BucketAccess access{.endpoint = read("TIDE_S3_ENDPOINT"),
                        .region = read("TIDE_S3_REGION"),
                        .bucket = read("TIDE_S3_BUCKET"),
                        .accessKeyId = read("TIDE_S3_KEY"),
                        .secretAccessKey = read("TIDE_S3_SECRET")};
    if (access.endpoint.empty() || access.bucket.empty() || access.accessKeyId.empty() ||
        access.secretAccessKey.empty()) {
        return std::nullopt;
    }
    return access;
}

std::unique_ptr<StorageProvider> bucketFrom(const ReadVariable& read,
                                            ConnectionCache* connections) {
    auto access = bucketAccessFrom(read);
    if (!access) {
        return std::make_unique<NoBucket>(kNoCredentials);
    }
    const auto endpoint = bucketEndpoint(access->endpoint);
    if (!endpoint) {
        return std::make_unique<NoBucket>("bucket endpoint must be a host: " +
                                          shown(access->endpoint));
    }
    access->endpoint = *endpoint;
    return std::make_unique<S3Provider>(std::move(*access), connections);
}

std::unique_ptr<StorageProvider> bucketFromEnvironment(ConnectionCache* connections) {
    return bucketFrom(environmentVariable, connections);
}

}  // namespace tide
