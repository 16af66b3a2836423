#include "onboarding/report.h"

#include <QJsonArray>

#include "server/addresses.h"

namespace quorvelle::onboarding {

namespace {

QString jurisdictionName(const Options& options) {
    return options.jurisdiction.isEmpty() ? QStringLiteral("none") : options.jurisdiction;
}

QJsonObject tokenObject(const QString& name, const QString& use, bool writes) {
    return {{QStringLiteral("name"), name},
            {QStringLiteral("use"), use},
            {QStringLiteral("access"),
             writes ? QStringLiteral("read+write") : QStringLiteral("read-only")}};
}

QJsonArray tokensArray(const Options& options, const Onboarded& result) {
    if (options.singleToken) {
        return {tokenObject(result.ciToken, QStringLiteral("shared"), true)};
    }
    return {
        tokenObject(result.serverToken, QStringLiteral("server"), result.backupsShareBucket),
        tokenObject(result.ciToken, QStringLiteral("ci"), true),
    };
}

QString tokensText(const Options& options, const Onboarded& result) {
    if (options.singleToken) {
        return QStringLiteral("one shared credential (%1)").arg(result.ciToken);
    }
    const QString access = result.backupsShareBucket
                               ? QStringLiteral("read+write - backups share this bucket")
                               : QStringLiteral("read-only");
    return QStringLiteral("server %1 (%2), CI %3 (read+write)")
        .arg(result.serverToken, access, result.ciToken);
}

}  // namespace

Lines preflightText(const Options& options, const Preflight& found) {
    const QString taken =
        found.bucketExists ? QStringLiteral("   ALREADY EXISTS") : QStringLiteral("   available");
    const QString forGood =
        options.jurisdiction.isEmpty() ? QString() : QStringLiteral(" (cannot be changed later)");
    const QString credentials =
        options.singleToken ? QStringLiteral("one token for the server and CI (fine for a demo)")
                            : QStringLiteral("two tokens - one for the server, read+write for CI");
    return lines(
        QStringLiteral("Cloudflare account: %1 (%2)\n"
                       "Bucket:             %3%4\n"
                       "Jurisdiction:       %5%6\n"
                       "S3 endpoint:        %7\n"
                       "Credentials:        %8\n"
                       "Server to configure: %9"),
        {found.account.id, found.account.name, options.bucket, taken, jurisdictionName(options),
         forGood, s3Endpoint(found.account.id, options.jurisdiction), credentials,
         options.server.url});
}

Lines onboardedText(const Options& options, const Onboarded& result) {
    return lines(
        QStringLiteral("\nBuild storage is connected on %1:\n"
                       "  bucket:   %2\n"
                       "  endpoint: %3\n"
                       "  tokens:   %4"),
        {options.server.url, options.bucket, result.endpoint, tokensText(options, result)});
}

QString tokenRightsHint() {
    return QStringLiteral(
               "\nThat token may not create credentials. Either add 'API Tokens - Edit' (user "
               "scope) to it and run this again, or create the bucket and its two keys yourself "
               "and connect them:\n ") +
           kStorageGuide +
           QStringLiteral(
               "\n quorvelle storage set --endpoint <url> --bucket <b> --access-key <k> "
               "--secret-key <s>\n");
}

QJsonObject reportObject(const Options& options, const Preflight& found, const Onboarded* result,
                         bool isInFile) {
    const QString endpoint = s3Endpoint(found.account.id, options.jurisdiction);
    QJsonObject object{{QStringLiteral("account_id"), found.account.id},
                       {QStringLiteral("bucket"), options.bucket},
                       {QStringLiteral("jurisdiction"), jurisdictionName(options)},
                       {QStringLiteral("endpoint"), endpoint},
                       {QStringLiteral("server"), options.server.url},
                       {QStringLiteral("created"), result != nullptr}};
    if (result != nullptr) {
        object.insert(QStringLiteral("tokens"), tokensArray(options, *result));
        if (!isInFile) {
            object.insert(QStringLiteral("ci"),
                          ciVariables(endpoint, options.bucket, result->ciCredential));
        }
    }
    return object;
}

}  // namespace quorvelle::onboarding
