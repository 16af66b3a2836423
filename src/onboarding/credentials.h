#pragma once

#include <QJsonObject>
#include <QString>

/// How Cloudflare's API tokens become credentials of the S3 protocol, and where an
/// account's buckets are reached with them.

namespace quorvelle::onboarding {

/// A key pair of the S3 protocol. The secret is shown to nobody but its one owner.
struct S3Credential {
    QString accessKey = {};
    QString secretKey = {};
};

/// The credential that a created API token stands for.
S3Credential credentialOf(const QString& tokenId, const QString& tokenValue);

/// An account's R2 endpoint; `jurisdiction` is "eu", "us" or empty.
QString s3Endpoint(const QString& accountId, const QString& jurisdiction);

/// What the server needs to reach a bucket, as its API takes it.
QJsonObject storageSettings(const QString& endpoint, const QString& bucket,
                            const S3Credential& credential);

/// What CI needs to reach the same bucket: the TIDE_S3_ environment variables.
QJsonObject ciVariables(const QString& endpoint, const QString& bucket,
                        const S3Credential& credential);

/// The same as "NAME=value" lines, for a secret store or an environment file.
QStringList ciLines(const QString& endpoint, const QString& bucket, const S3Credential& credential);

}  // namespace quorvelle::onboarding
