#include "onboarding/undo_list.h"

namespace quorvelle::onboarding {

namespace {

/// Whether nothing of the bucket is left.
bool undoBucket(CloudflareApi& api, const BucketPlace& place, bool lost) {
    bool found = true;
    if (lost && !api.findBucket(place, found, OnInterrupt::kGoOn).done()) {
        return false;
    }
    return !found || api.deleteBucket(place).done();
}

}  // namespace

void UndoList::addToken(const QString& id) {
    tokens.append({.name = id});
}

void UndoList::addLostToken(const QString& name) {
    tokens.append({.name = name, .lost = true});
}

void UndoList::addBucket(const BucketPlace& place) {
    bucket = place;
    bucketLost = false;
}

void UndoList::addLostBucket(const BucketPlace& place) {
    bucket = place;
    bucketLost = true;
}

QStringList UndoList::undo(CloudflareApi& api) const {
    QStringList left;
    for (const Token& token : tokens) {
        if (token.lost || !api.deleteToken(token.name).done()) {
            left.append(QStringLiteral("API token %1").arg(token.name));
        }
    }
    if (bucket && !undoBucket(api, *bucket, bucketLost)) {
        left.append(QStringLiteral("bucket %1").arg(bucket->name));
    }
    return left;
}

}  // namespace quorvelle::onboarding
