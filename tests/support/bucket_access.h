#pragma once

#include "support/fake_bucket.h"
#include "tide/store/s3_provider.h"

namespace quorvelle::testing {

/// What the engine needs to reach the fake bucket.
inline tide::BucketAccess accessTo(const FakeBucket& bucket) {
    return {.endpoint = bucket.endpoint(),
            .region = FakeBucket::kRegion,
            .bucket = FakeBucket::kName,
            .accessKeyId = FakeBucket::kKeyId,
            .secretAccessKey = FakeBucket::kSecret};
}

}  // namespace quorvelle::testing
