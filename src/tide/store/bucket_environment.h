#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "tide/store/s3_provider.h"
#include "tide/store/storage_provider.h"

namespace tide {

/// Looks an environment variable up; an unset one reads as empty.
using ReadVariable = std::function<std::string(const char* name)>;

/// Bucket access from TIDE_S3_ENDPOINT, TIDE_S3_REGION (may be empty), TIDE_S3_BUCKET,
/// TIDE_S3_KEY and TIDE_S3_SECRET; nothing when one that is needed is empty.
std::optional<BucketAccess> bucketAccessFrom(const ReadVariable& read);

/// The bucket that this process's environment names. Without usable variables it is a
/// provider whose every operation fails, saying which ones are missing: a run that needs
/// no bucket (presigned URLs, or everything already on disk) never notices.
/// `connections` as in S3Provider.
std::unique_ptr<StorageProvider> bucketFromEnvironment(ConnectionCache* connections = nullptr);

}  // namespace tide
