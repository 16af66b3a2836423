#include "tide/store/bucket_environment.h"

#include <cstdlib>
#include <utility>

#include "tide/error.h"

namespace tide {

namespace {

// Stands where a bucket is not configured.
class NoBucket : public StorageProvider {
public:
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
    static bool refuse(std::string* err) {
        return fail(err,
                    "no chunk URLs and no bucket credentials (TIDE_S3_ENDPOINT, TIDE_S3_BUCKET, "
                    "TIDE_S3_KEY, TIDE_S3_SECRET)");
    }
};

std::string environmentVariable(const char* name) {
    const char* value = std::getenv(name);
    return value == nullptr ? std::string() : value;
}

}  // namespace

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

std::unique_ptr<StorageProvider> bucketFromEnvironment(ConnectionCache* connections) {
    if (auto access = bucketAccessFrom(environmentVariable)) {
        return std::make_unique<S3Provider>(std::move(*access), connections);
    }
    return std::make_unique<NoBucket>();
}

}  // namespace tide
