#pragma once

#include <QLatin1String>
#include <QString>

/// Every address that is built into the program, absolute and without a "/" at its end.

namespace quorvelle {

/// The licensing service, and the bearer token with which this client presents itself.
inline constexpr QLatin1String kLicensingService("https://licensing.quorvelle.example");
inline constexpr QLatin1String kLicensingToken("quorvelle-cli");

/// Where people get the program.
inline constexpr QLatin1String kDownloads("https://quorvelle.example/download");

/// The guide to connecting build storage by hand.
inline constexpr QLatin1String kStorageGuide("https://quorvelle.example/docs/build-storage");

/// Cloudflare's API; cloudflareApi() is what requests go to.
inline constexpr QLatin1String kCloudflareApi("https://api.cloudflare.com/client/v4");

/// What follows the account (and the jurisdiction) in the host name of an R2 endpoint.
inline constexpr QLatin1String kR2EndpointSuffix("r2.cloudflarestorage.com");

/// QUORVELLE_CLOUDFLARE_API_URL when it is set, else Cloudflare's API.
inline QString cloudflareApi() {
    const QString instead = qEnvironmentVariable("QUORVELLE_CLOUDFLARE_API_URL");
    return instead.isEmpty() ? QString(kCloudflareApi) : instead;
}

}  // namespace quorvelle
