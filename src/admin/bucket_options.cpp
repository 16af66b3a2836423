#include "admin/bucket_options.h"

#include "console/arguments.h"

namespace quorvelle {

bool BucketOptions::any() const {
    return !(endpoint + bucket + accessKey + secretKey + region).isEmpty();
}

bool BucketOptions::complete() const {
    return !endpoint.isEmpty() && !bucket.isEmpty() && !accessKey.isEmpty() && !secretKey.isEmpty();
}

QJsonObject BucketOptions::json() const {
    return {{QStringLiteral("endpoint"), endpoint},
            {QStringLiteral("bucket"), bucket},
            {QStringLiteral("access_key"), accessKey},
            {QStringLiteral("secret_key"), secretKey},
            {QStringLiteral("region"), region.isEmpty() ? QStringLiteral("auto") : region}};
}

BucketOptions takeBucketOptions(QStringList& args) {
    return {.endpoint = takeOption(args, QStringLiteral("--endpoint")),
            .bucket = takeOption(args, QStringLiteral("--bucket")),
            .accessKey = takeOption(args, QStringLiteral("--access-key")),
            .secretKey = takeOption(args, QStringLiteral("--secret-key")),
            .region = takeOption(args, QStringLiteral("--region"))};
}

}  // namespace quorvelle
