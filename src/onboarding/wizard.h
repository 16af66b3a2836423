#pragma once

#include <QString>
#include <functional>
#include <optional>

#include "onboarding/cloudflare_api.h"
#include "onboarding/credentials.h"
#include "onboarding/preflight.h"
#include "onboarding/server_storage.h"
#include "onboarding/undo_list.h"

namespace quorvelle::onboarding {

/// What a run that succeeded leaves for the user.
struct Onboarded {
    QString endpoint = {};
    /// The server's token may write, since its backups go to the same bucket.
    bool backupsShareBucket = false;
    /// The names of the tokens at Cloudflare; the same one twice for a shared token.
    QString serverToken = {};
    QString ciToken = {};
    S3Credential ciCredential = {};
};

/// Creates a bucket and the tokens for it and hands the server its credential, step by
/// step. A run that fails, or is interrupted, deletes what it created before it returns;
/// a run whose credential the server has accepted does not fail any more.
class Wizard {
public:
    /// `announce` gets a line per step, without its line end. The references must outlive
    /// the wizard.
    Wizard(CloudflareApi& cloudflare, BoundedCalls& serverCalls, const Clock& time,
           const Options& wanted, std::function<void(const QString& line)> announce);

    /// Runs once. After a failure, whose text names what could not be deleted again,
    /// `result` is of no use.
    std::optional<Failure> run(Onboarded& result);

private:
    using Step = std::optional<Failure> (Wizard::*)();

    std::optional<Failure> findPlace();
    std::optional<Failure> checkName();
    std::optional<Failure> readGroups();
    std::optional<Failure> createBucket();
    std::optional<Failure> askForBackups();
    std::optional<Failure> createTokens();
    std::optional<Failure> save();

    std::optional<Failure> createToken(const QString& name, BucketAccess access,
                                       S3Credential& credential);

    CloudflareApi& api;
    BoundedCalls& calls;
    const Clock& clock;
    const Options& options;
    std::function<void(const QString& line)> say;

    BucketPlace place = {};
    BucketGroups groups = {};
    UndoList undoList = {};
    S3Credential serverCredential = {};
    Onboarded onboarded = {};
};

}  // namespace quorvelle::onboarding
