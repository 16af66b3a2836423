#pragma once

#include <QJsonArray>
#include <QJsonObject>
#include <QString>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "tide/assemble.h"
#include "tide/manifest/descriptor.h"
#include "tide/manifest/manifest.h"

/// The chunk engine's work for one sync, as plain functions that run on a worker thread
/// and touch nothing but what they are given.

namespace quorvelle {

/// Everything a worker needs, by value. Texts and paths are UTF-8.
struct TideJob {
    tide::ManifestSource source = {};
    /// Shared, for there may be a million. Null until a descriptor was read.
    std::shared_ptr<const tide::ChunkUrls> chunkUrls = {};
    std::string stagingDir = {};
    std::string installDir = {};
    /// Whether staging may share files with the install under second names.
    bool mayLink = true;
};

/// What a worker comes back with: whether all is well, and a text for the message.
struct TideResult {
    bool ok = false;
    QString text = {};
    /// Of an assembly.
    tide::AssemblyOutcome outcome = {};
};

/// Called when another percent is done, with the bytes assembled so far.
using PercentCallback = std::function<void(int percent, std::int64_t bytes)>;

/// Called with the bytes that are done, and with all there are where that is known; at most
/// twenty times a second.
using BytesCallback = std::function<void(std::int64_t bytes, std::optional<std::int64_t> total)>;

/// The subscriptions of a configuration; those without a "tide_public_key" of their own
/// carry that of their server's entry.
QJsonArray subscriptionsWithKeys(const QJsonObject& document);

/// Whether the person asked for signed builds of this very subscription or server, so that
/// a channel that cannot be signed is refused. The environment's key speaks for tide
/// channels alone.
bool mustBeSigned(const QJsonObject& subscriptionWithKey);

/// The keys of which one must have signed a manifest: the subscription's "tide_public_key",
/// one text or a list of texts, else QUORVELLE_TIDE_PUBLIC_KEY; none where neither is given.
/// What is there but is no key (another type, an empty text or list) becomes one that no
/// signature fits ("bad public key").
tide::PublicKeys tidePublicKeys(const QJsonObject& subscriptionWithKey);

/// Compares the install directory with the channel's manifest, by existence and size
/// (`quick`) or byte for byte. Not ok when files are bad; a check that could not be made
/// is ok, and its text says so. `onBytes` is called on the calling thread.
TideResult checkInstall(const TideJob& job, bool quick, const BytesCallback& onBytes);

/// Assembles the channel's build in the staging directory, reusing what the install
/// directory holds. The callbacks are called on the calling thread, `onPercent` once per
/// percent that is new; they may be empty.
TideResult assembleStaging(const TideJob& job, const PercentCallback& onPercent,
                           const BytesCallback& onBytes);

}  // namespace quorvelle
