#pragma once

#include <QJsonArray>
#include <QList>
#include <QString>
#include <chrono>
#include <optional>

#include "onboarding/bounded_calls.h"

/// The part of Cloudflare's API v4 that makes a bucket and the tokens for it.

namespace quorvelle::onboarding {

/// Cloudflare's answer to one call.
struct CloudflareReply {
    enum class Outcome {
        kDone,
        kRefused,   ///< nothing was changed
        kNoAnswer,  ///< what was asked for may have been done all the same
    };

    Outcome outcome = Outcome::kNoAnswer;
    QJsonObject object = {};
    /// Of a call that is not done: the message for the user, with the sender's name.
    QString message = {};
    /// Cloudflare's own number of a refusal, 0 without one.
    int code = 0;
    /// The HTTP status, 0 when none arrived.
    int status = 0;

    bool done() const { return outcome == Outcome::kDone; }
    bool refused() const { return outcome == Outcome::kRefused; }
};

struct CloudflareAccount {
    QString id = {};
    QString name = {};
};

/// A bucket, or the place where one would be. The jurisdiction is "eu", "us" or empty.
struct BucketPlace {
    QString accountId = {};
    QString jurisdiction = {};
    QString name = {};
};

/// Ids of the permission groups that access to a bucket is made of.
struct BucketGroups {
    QString read = {};
    QString write = {};
};

enum class BucketAccess { kReadOnly, kReadWrite };

/// The operator's access to Cloudflare, one blocking call per function. The operator's
/// token is in no message that comes back, whatever Cloudflare wrote.
class CloudflareApi {
public:
    /// `base` is the API's URL; `caller` must outlive this object.
    CloudflareApi(BoundedCalls& caller, const QString& base, const QString& operatorToken,
                  std::chrono::milliseconds limit = std::chrono::seconds(30));

    /// All accounts that the token sees.
    CloudflareReply listAccounts(QList<CloudflareAccount>& accounts);

    /// Whether the account has a bucket of the place's name in its jurisdiction.
    CloudflareReply findBucket(const BucketPlace& place, bool& found,
                               OnInterrupt onInterrupt = OnInterrupt::kGiveUp);

    CloudflareReply createBucket(const BucketPlace& place);
    CloudflareReply deleteBucket(const BucketPlace& place);

    /// Refused by Cloudflare to tokens that may not create tokens. A group that is
    /// missing stays empty.
    CloudflareReply readGroups(BucketGroups& groups);

    /// `id` and `value` are those of the reply and may be empty even when it is done.
    CloudflareReply createToken(const QString& name, const BucketPlace& place,
                                const BucketGroups& groups, BucketAccess access, QString& id,
                                QString& value);
    CloudflareReply deleteToken(const QString& id);

private:
    struct Call {
        QByteArray method = {};
        QString path = {};
        QJsonObject body = {};
        /// Of a bucket call that is not for the default jurisdiction.
        QString jurisdiction = {};
        OnInterrupt onInterrupt = OnInterrupt::kGiveUp;
    };

    CloudflareReply send(const Call& call);
    /// Sends a listing page after page; `take` gets the "result" of each.
    template <typename Take>
    CloudflareReply sendPages(Call call, Take take);

    BoundedCalls& calls;
    QString baseUrl;
    QString token;
    TimeLimit limit;
};

/// The names under which Cloudflare lists the groups.
inline constexpr QLatin1String kReadGroup("Workers R2 Storage Bucket Item Read");
inline constexpr QLatin1String kWriteGroup("Workers R2 Storage Bucket Item Write");

/// The text of a permission for a token as Cloudflare takes it: what it may do with which
/// bucket.
QJsonObject tokenPolicy(const BucketPlace& place, const BucketGroups& groups, BucketAccess access);

}  // namespace quorvelle::onboarding
