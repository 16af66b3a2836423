#include "onboarding/wizard.h"

#include <utility>

namespace quorvelle::onboarding {

namespace {

/// Cloudflare's number for a bucket name that is in use.
constexpr int kBucketExistsCode = 10004;
constexpr int kConflictStatus = 409;

/// Cloudflare keeps tokens without the right to create tokens from both the groups and
/// the creation.
std::optional<Failure> tokenFailureOf(const CloudflareReply& reply) {
    auto failure = failureOf(reply);
    if (failure) {
        failure->mayNotCreateTokens = reply.refused();
    }
    return failure;
}

}  // namespace

Wizard::Wizard(CloudflareApi& cloudflare, BoundedCalls& serverCalls, const Clock& time,
               const Options& wanted, std::function<void(const QString& line)> announce)
    : api(cloudflare), calls(serverCalls), clock(time), options(wanted), say(std::move(announce)) {}

std::optional<Failure> Wizard::run(Onboarded& result) {
    std::optional<Failure> failure;
    for (const Step step :
         {&Wizard::findPlace, &Wizard::checkName, &Wizard::readGroups, &Wizard::createBucket,
          &Wizard::askForBackups, &Wizard::createTokens, &Wizard::save}) {
        failure = calls.isInterrupted() ? Failure{} : (this->*step)();
        if (failure) {
            break;
        }
    }
    if (!failure) {
        say(QStringLiteral("Done"));
        result = onboarded;
        return std::nullopt;
    }
    if (calls.isInterrupted()) {
        failure = Failure{.text = QStringLiteral("interrupted")};
    }
    const QStringList left = undoList.undo(api);
    if (!left.isEmpty()) {
        failure->more << QStringLiteral(
                             "could not undo everything - delete this by hand in Cloudflare: ") +
                             left.join(QStringLiteral(", "));
    }
    return failure;
}

std::optional<Failure> Wizard::findPlace() {
    say(QStringLiteral("Looking up your Cloudflare account"));
    CloudflareAccount account;
    if (auto failure = findAccount(api, options.accountId, account)) {
        return failure;
    }
    place = {account.id, options.jurisdiction, options.bucket};
    onboarded.endpoint = s3Endpoint(account.id, options.jurisdiction);
    return std::nullopt;
}

std::optional<Failure> Wizard::checkName() {
    say(QStringLiteral("Checking whether '%1' is free").arg(place.name));
    bool taken = false;
    if (auto failure = failureOf(api.findBucket(place, taken))) {
        return failure;
    }
    return taken ? std::optional(bucketExists(place.name, QStringLiteral("Cloudflare account")))
                 : std::nullopt;
}

std::optional<Failure> Wizard::readGroups() {
    if (auto failure = tokenFailureOf(api.readGroups(groups))) {
        return failure;
    }
    for (const auto& [id, name] :
         {std::pair(groups.read, kReadGroup), std::pair(groups.write, kWriteGroup)}) {
        if (id.isEmpty()) {
            return Failure{
                .text =
                    QStringLiteral("Cloudflare lists no permission group named '%1'").arg(name)};
        }
    }
    return std::nullopt;
}

std::optional<Failure> Wizard::createBucket() {
    say(QStringLiteral("Creating the bucket '%1'").arg(place.name));
    const CloudflareReply reply = api.createBucket(place);
    if (reply.done()) {
        undoList.addBucket(place);
        return std::nullopt;
    }
    if (!reply.refused()) {
        undoList.addLostBucket(place);
        return failureOf(reply);
    }
    bool appeared = reply.code == kBucketExistsCode || reply.status == kConflictStatus;
    if (!appeared) {
        api.findBucket(place, appeared);
    }
    if (appeared) {
        return Failure{.text = QStringLiteral("the bucket '%1' appeared in this account a moment "
                                              "ago - run again with a different name")
                                   .arg(place.name),
                       .exitCode = kExitUsage};
    }
    return failureOf(reply);
}

std::optional<Failure> Wizard::askForBackups() {
    onboarded.backupsShareBucket = backupsShareBucket(calls, options.server);
    if (onboarded.backupsShareBucket) {
        say(QStringLiteral(
            "Backups on this server share the build bucket, so its key needs write access"));
    }
    return std::nullopt;
}

std::optional<Failure> Wizard::createTokens() {
    const QString name = place.name + QStringLiteral("-%1");
    if (options.singleToken) {
        say(QStringLiteral("Creating one access token for the server and CI"));
        onboarded.serverToken = onboarded.ciToken = name.arg(QStringLiteral("shared"));
        auto failure =
            createToken(onboarded.ciToken, BucketAccess::kReadWrite, onboarded.ciCredential);
        serverCredential = onboarded.ciCredential;
        return failure;
    }
    const bool writes = onboarded.backupsShareBucket;
    say(writes ? QStringLiteral("Creating the server's read+write access token")
               : QStringLiteral("Creating the server's read-only access token"));
    onboarded.serverToken = name.arg(QStringLiteral("server"));
    if (auto failure = createToken(onboarded.serverToken,
                                   writes ? BucketAccess::kReadWrite : BucketAccess::kReadOnly,
                                   serverCredential)) {
        return failure;
    }
    if (calls.isInterrupted()) {
        return Failure{};
    }
    say(QStringLiteral("Creating CI's read+write access token"));
    onboarded.ciToken = name.arg(QStringLiteral("ci"));
    return createToken(onboarded.ciToken, BucketAccess::kReadWrite, onboarded.ciCredential);
}

std::optional<Failure> Wizard::createToken(const QString& name, BucketAccess access,
                                           S3Credential& credential) {
    QString id;
    QString value;
    const CloudflareReply reply = api.createToken(name, place, groups, access, id, value);
    if (reply.refused()) {
        return tokenFailureOf(reply);
    }
    if (id.isEmpty()) {
        undoList.addLostToken(name);
    } else {
        undoList.addToken(id);
    }
    if (reply.done() && (id.isEmpty() || value.isEmpty())) {
        return Failure{.text = QStringLiteral(
                           "Cloudflare: Cloudflare created a token without an id or value")};
    }
    credential = credentialOf(id, value);
    return failureOf(reply);
}

std::optional<Failure> Wizard::save() {
    say(QStringLiteral("Saving the credential to %1 (it probes the bucket)")
            .arg(options.server.url));
    const QJsonObject settings = storageSettings(onboarded.endpoint, place.name, serverCredential);
    const SaveResult result = saveUntilActive(
        [&] { return saveStorage(calls, options.server, settings); }, clock,
        [this] { return calls.isInterrupted(); },
        [this] { say(QStringLiteral("Waiting for Cloudflare to activate the new credential")); });
    const bool saved = result.outcome == SaveResult::Outcome::kSaved ||
                       (result.outcome == SaveResult::Outcome::kNoAnswer &&
                        hasStorage(calls, options.server, settings));
    return saved ? std::nullopt : std::optional(Failure{.text = result.message});
}

}  // namespace quorvelle::onboarding
