#pragma once

#include <QJsonObject>
#include <QString>
#include <cstdint>
#include <functional>
#include <string>

#include "tide/manifest/descriptor.h"

/// The chunk engine's work for one sync, as plain functions that run on a worker thread
/// and touch nothing but what they are given.

namespace quorvelle {

/// Everything a worker needs, by value. Texts and paths are UTF-8.
struct TideJob {
    std::string channel = {};
    /// 64 hexadecimal digits, or empty: no signature is asked for.
    std::string publicKey = {};
    std::string manifestUrl = {};
    std::string signatureUrl = {};
    tide::ChunkUrls chunkUrls = {};
    std::string stagingDir = {};
    std::string installDir = {};
};

/// What a worker comes back with: whether all is well, and a text for the message.
struct TideResult {
    bool ok = false;
    QString text = {};
};

/// Called when another percent is done, with the bytes assembled so far.
using PercentCallback = std::function<void(int percent, std::int64_t bytes)>;

/// The key that a manifest must be signed with: the subscription's "tide_public_key",
/// else that of its server's entry in the configuration, else
/// QUORVELLE_TIDE_PUBLIC_KEY; empty where none is given.
QString tidePublicKey(const QJsonObject& subscription);

/// Compares the install directory with the channel's manifest, by existence and size
/// (`quick`) or byte for byte. Not ok when files are bad; a check that could not be made
/// is ok, and its text says so.
TideResult checkInstall(const TideJob& job, bool quick);

/// Assembles the channel's build in the staging directory, reusing what the install
/// directory holds. `onPercent` is called on the calling thread, once per percent that is
/// new.
TideResult assembleStaging(const TideJob& job, const PercentCallback& onPercent);

}  // namespace quorvelle
