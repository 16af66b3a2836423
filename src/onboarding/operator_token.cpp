#include "onboarding/operator_token.h"

#include <QFile>

namespace quorvelle::onboarding {

namespace {

/// Far above any token, so that a wrong path is not read to its end.
constexpr qint64 kMaxTokenBytes = 64 * 1024;

}  // namespace

std::optional<QString> tokenOnCommandLine(const QStringList& args) {
    if (!args.contains(QStringLiteral("--token"))) {
        return std::nullopt;
    }
    return QStringLiteral(
        "refusing --token: a Cloudflare token on the command line lands in shell history and CI "
        "logs. Set CLOUDFLARE_API_TOKEN, or use --token-file <path>.");
}

std::optional<QString> readOperatorToken(const QString& tokenFile, QString& token) {
    token = qEnvironmentVariable("CLOUDFLARE_API_TOKEN").trimmed();
    if (token.isEmpty() && !tokenFile.isEmpty()) {
        QFile file(tokenFile);
        if (!file.open(QIODevice::ReadOnly)) {
            return QStringLiteral("cannot read %1").arg(tokenFile);
        }
        token = QString::fromUtf8(file.read(kMaxTokenBytes)).trimmed();
    }
    if (!token.isEmpty()) {
        return std::nullopt;
    }
    return QStringLiteral(
        "no Cloudflare API token: set CLOUDFLARE_API_TOKEN or pass --token-file <path>. The token "
        "needs 'API Tokens - Edit' (user) and 'Workers R2 Storage - Edit' (account).");
}

}  // namespace quorvelle::onboarding
