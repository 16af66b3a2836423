#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>

#include "tide/chunks/chunk.h"
#include "tide/chunks/cut_search.h"

namespace tide {

/// Chunk lengths in bytes. The defaults are those that builds are published with: with
/// others the ids of unchanged content would not meet those of a manifest.
struct ChunkerParameters {
    /// No chunk but a file's last is shorter.
    std::uint64_t minimum = std::uint64_t{1} << 20;
    /// Up to here a cut is made rare, beyond it likely, so lengths gather around it.
    std::uint64_t normal = std::uint64_t{4} << 20;
    /// No chunk is longer. At least 1, and not below the minimum.
    std::uint64_t maximum = std::uint64_t{16} << 20;
};

/// Which bits of the rolling hash must be zero for a cut, from the normal chunk length.
struct CutMasks {
    /// Before the normal length.
    std::uint64_t strict = 0;
    /// From it on.
    std::uint64_t loose = 0;
};

CutMasks cutMasks(std::uint64_t normalLength);

/// Cuts a file into content-defined chunks and calls `callback` once per chunk, in file
/// order, on the calling thread. An empty file has none. Memory stays at about 1 MiB,
/// whatever the lengths. On failure ("cannot open ...", "read error on ..."; `err` may be
/// null) chunks may already have been handed over. `scan` is for tests and measurements.
bool chunkFile(const std::filesystem::path& file, const ChunkerParameters& parameters,
               const std::function<void(const Chunk&)>& callback, std::string* err,
               CutScan scan = &scanInLanes);

}  // namespace tide
