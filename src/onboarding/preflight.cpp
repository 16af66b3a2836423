#include "onboarding/preflight.h"

#include <algorithm>

namespace quorvelle::onboarding {

namespace {

Failure wrongChoice(const QString& text, const QStringList& more = {}) {
    return {.text = text, .more = more, .exitCode = kExitUsage};
}

Failure manyAccounts(const QList<CloudflareAccount>& accounts) {
    QStringList lines;
    for (const CloudflareAccount& account : accounts) {
        lines << QStringLiteral("  ") + account.id + QStringLiteral("  ") + account.name;
    }
    return wrongChoice(QStringLiteral("This token sees %1 accounts:").arg(accounts.size()),
                       lines << QStringLiteral("pass --account-id <id> to choose one"));
}

}  // namespace

Failure bucketExists(const QString& name, const QString& where) {
    return wrongChoice(
        QStringLiteral("a bucket named '%1' already exists in this %2. Quorvelle will not write "
                       "into a bucket it did not create - choose another name.")
            .arg(name, where));
}

std::optional<Failure> failureOf(const CloudflareReply& reply) {
    return reply.done() ? std::nullopt : std::optional(Failure{.text = reply.message});
}

std::optional<Failure> findAccount(CloudflareApi& api, const QString& wantedId,
                                   CloudflareAccount& account) {
    QList<CloudflareAccount> accounts;
    if (const auto failure = failureOf(api.listAccounts(accounts))) {
        return failure;
    }
    if (accounts.isEmpty()) {
        return wrongChoice(
            QStringLiteral("that token sees no Cloudflare account - check it was created for the "
                           "right account"));
    }
    if (wantedId.isEmpty() && accounts.size() > 1) {
        return manyAccounts(accounts);
    }
    const auto found = std::find_if(
        accounts.cbegin(), accounts.cend(),
        [&](const CloudflareAccount& a) { return wantedId.isEmpty() || a.id == wantedId; });
    if (found == accounts.cend()) {
        return wrongChoice(
            QStringLiteral("that token does not see the account '%1'").arg(wantedId));
    }
    account = *found;
    return std::nullopt;
}

std::optional<Failure> storageInitPreflight(CloudflareApi& api, const Options& options,
                                            Preflight& found) {
    if (auto failure = findAccount(api, options.accountId, found.account)) {
        return failure;
    }
    return failureOf(api.findBucket({found.account.id, options.jurisdiction, options.bucket},
                                    found.bucketExists));
}

}  // namespace quorvelle::onboarding
