#pragma once

#include <json/value.h>

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "tide/manifest/manifest.h"
#include "tide/store/storage_provider.h"

namespace tide {

/// The problem of a file of the right size that a program holds so that nobody else can read
/// it (Windows).
inline constexpr char kInUse[] = "in use";

/// Called after each file: files done, files in all, bytes checked so far (in a quick
/// check the sizes of the files found good).
using CheckProgress = std::function<void(std::uint64_t, std::uint64_t, std::int64_t)>;

/// Called once per bad file with its path as the manifest has it and the first problem
/// found: "missing", "size mismatch", "truncated or unreadable" or "chunk hash mismatch"; or
/// kInUse for a file that nothing can be said of.
using IssueCallback = std::function<void(const std::string& path, const std::string& problem)>;

/// Compares an install directory (UTF-8) with a manifest, file by file in its order, on
/// the calling thread, which the callbacks are called on as well; either may be empty. A
/// quick check looks at existence and size alone; a full one reads and hashes every
/// byte. True when the check could be made: bad files are its result, not its failure.
/// False, with `err` assigned unless null, when the manifest's file list is unusable.
bool verifyFiles(const std::string& installDirectory, const Json::Value& manifest,
                 const CheckProgress& progress, const IssueCallback& issue, std::string* err,
                 bool quick);

/// The same with a list that was read.
void verifyFiles(const std::string& installDirectory, const std::vector<ManifestFile>& files,
                 const CheckProgress& progress, const IssueCallback& issue, bool quick);

/// Fetches the manifest and compares the install directory with it. False, with nothing
/// compared, when the manifest cannot be had or is refused. `connections` is borrowed and
/// may be null.
bool verifyInstall(StorageProvider& provider, const ManifestSource& source,
                   const std::string& installDirectory, const CheckProgress& progress,
                   const IssueCallback& issue, std::string* err, bool quick,
                   ConnectionCache* connections = nullptr);

/// The same with the source's members one by one.
bool verifyInstall(StorageProvider& provider, const std::string& channel,
                   const std::string& installDirectory, const PublicKeys& publicKeyHex,
                   const std::string& manifestUrl, const std::string& signatureUrl,
                   const CheckProgress& progress, const IssueCallback& issue, std::string* err,
                   bool quick);

}  // namespace tide
