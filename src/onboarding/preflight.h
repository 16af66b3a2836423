#pragma once

#include <QString>
#include <optional>

#include "console/exit_code.h"
#include "onboarding/cloudflare_api.h"
#include "server/server.h"

/// What a run finds out at Cloudflare before it changes anything.

namespace quorvelle::onboarding {

/// What the user asked for, already checked.
struct Options {
    /// Chosen by the user; empty takes the only one there is.
    QString accountId = {};
    QString bucket = {};
    /// "eu", "us" or empty.
    QString jurisdiction = {};
    bool singleToken = false;
    Server server = {};
};

/// Why a run ends early.
struct Failure {
    QString text = {};
    /// Further lines of it.
    QStringList more = {};
    int exitCode = kExitFailed;
    /// Cloudflare keeps the operator's token from creating tokens, which has a remedy.
    bool mayNotCreateTokens = false;
};

/// A bucket name that is taken, in the words for both times at which it can show.
Failure bucketExists(const QString& name, const QString& where);

/// The failure that a call to Cloudflare ended in, or nothing.
std::optional<Failure> failureOf(const CloudflareReply& reply);

/// Finds the account to work in: the one asked for, else the only one.
std::optional<Failure> findAccount(CloudflareApi& api, const QString& wantedId,
                                   CloudflareAccount& account);

struct Preflight {
    CloudflareAccount account = {};
    /// The account has a bucket of that name.
    bool bucketExists = false;
};

/// Finds the account and looks whether the bucket's name is taken in it. Changes nothing.
std::optional<Failure> storageInitPreflight(CloudflareApi& api, const Options& options,
                                            Preflight& found);

}  // namespace quorvelle::onboarding
