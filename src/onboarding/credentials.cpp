#include "onboarding/credentials.h"

#include <QCryptographicHash>
#include <QList>
#include <QPair>

#include "server/addresses.h"

namespace quorvelle::onboarding {

namespace {

/// R2 knows no regions; this is what S3 clients have to name.
constexpr QLatin1String kRegion("auto");

QList<QPair<QString, QString>> variables(const QString& endpoint, const QString& bucket,
                                         const S3Credential& credential) {
    return {{QStringLiteral("TIDE_S3_ENDPOINT"), endpoint},
            {QStringLiteral("TIDE_S3_REGION"), kRegion},
            {QStringLiteral("TIDE_S3_BUCKET"), bucket},
            {QStringLiteral("TIDE_S3_KEY"), credential.accessKey},
            {QStringLiteral("TIDE_S3_SECRET"), credential.secretKey}};
}

}  // namespace

S3Credential credentialOf(const QString& tokenId, const QString& tokenValue) {
    const QByteArray digest =
        QCryptographicHash::hash(tokenValue.toUtf8(), QCryptographicHash::Sha256);
    return {tokenId, QString::fromLatin1(digest.toHex())};
}

QString s3Endpoint(const QString& accountId, const QString& jurisdiction) {
    const QString label = jurisdiction.isEmpty() ? QString() : u'.' + jurisdiction;
    return QStringLiteral("https://") + accountId + label + u'.' + kR2EndpointSuffix;
}

QJsonObject storageSettings(const QString& endpoint, const QString& bucket,
                            const S3Credential& credential) {
    return {{QStringLiteral("endpoint"), endpoint},
            {QStringLiteral("region"), kRegion},
            {QStringLiteral("bucket"), bucket},
            {QStringLiteral("access_key"), credential.accessKey},
            {QStringLiteral("secret_key"), credential.secretKey}};
}

QJsonObject ciVariables(const QString& endpoint, const QString& bucket,
                        const S3Credential& credential) {
    QJsonObject object;
    for (const auto& [name, value] : variables(endpoint, bucket, credential)) {
        object.insert(name, value);
    }
    return object;
}

QStringList ciLines(const QString& endpoint, const QString& bucket,
                    const S3Credential& credential) {
    QStringList lines;
    for (const auto& [name, value] : variables(endpoint, bucket, credential)) {
        lines << name + u'=' + value;
    }
    return lines;
}

}  // namespace quorvelle::onboarding
