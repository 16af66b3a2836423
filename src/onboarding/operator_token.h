#pragma once

#include <QString>
#include <QStringList>
#include <optional>

namespace quorvelle::onboarding {

/// Why a command line is refused that carries the operator's token itself, or nothing.
std::optional<QString> tokenOnCommandLine(const QStringList& args);

/// Finds the operator's Cloudflare API token: CLOUDFLARE_API_TOKEN, else the content of
/// the file (no file when the path is empty). Without one, the error for the user.
std::optional<QString> readOperatorToken(const QString& tokenFile, QString& token);

}  // namespace quorvelle::onboarding
