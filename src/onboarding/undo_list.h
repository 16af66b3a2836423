#pragma once

#include <QList>
#include <QString>
#include <QStringList>
#include <optional>

#include "onboarding/cloudflare_api.h"

namespace quorvelle::onboarding {

/// What a run has created at Cloudflare, or may have created when a call got no answer,
/// so that a run that fails can take it all back.
class UndoList {
public:
    void addToken(const QString& id);
    /// A token whose id the run never learnt; only a person can find and delete it.
    void addLostToken(const QString& name);
    void addBucket(const BucketPlace& place);
    /// A bucket of a name that was free before it was asked for; it is deleted if it is
    /// there.
    void addLostBucket(const BucketPlace& place);

    /// Deletes the tokens in the order of their creation, then the bucket; a failed
    /// delete stops nothing. The names of what is left, for the user.
    QStringList undo(CloudflareApi& api) const;

private:
    struct Token {
        QString name = {};
        bool lost = false;
    };

    QList<Token> tokens;
    std::optional<BucketPlace> bucket;
    bool bucketLost = false;
};

}  // namespace quorvelle::onboarding
