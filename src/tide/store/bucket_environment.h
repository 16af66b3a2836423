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

/// A bucket's endpoint with its scheme, https where it names none; nothing for one that is more
/// than a host and a port, for a signature covers neither a path nor a user there.
std::optional<std::string> bucketEndpoint(std::string text);

/// The bucket that these variables name. Without usable ones it is a provider whose every
/// operation fails, saying which ones are missing, or that the endpoint is no host: a run
/// that needs no bucket (presigned URLs, or everything already on disk) never notices.
/// `connections` as in S3Provider.
std::unique_ptr<StorageProvider> bucketFrom(const ReadVariable& read,
                                            ConnectionCache* connections = nullptr);

/// The same of this process's environment.
std::unique_ptr<StorageProvider> bucketFromEnvironment(ConnectionCache* connections = nullptr);

}  // namespace tide
