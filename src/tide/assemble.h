#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "tide/manifest/descriptor.h"
#include "tide/manifest/signature.h"
#include "tide/replace_file.h"
#include "tide/store/storage_provider.h"

namespace tide {

/// Called after each chunk that is in its place: chunks done, chunks in all (repeats
/// counted each time), bytes assembled so far.
using AssemblyProgress = std::function<void(std::uint64_t, std::uint64_t, std::int64_t)>;

/// Brings a directory to what a channel's manifest lists: fetches the manifest (channel,
/// `publicKeyHex`, `manifestUrl` and `signatureUrl` as in fetchManifest), then puts
/// every file together from chunks, in the manifest's order, taking each from this
/// machine where it is present and from the network where not: from `chunkUrls`, or from
/// the bucket when that is empty.
///
/// `targetDirectory` and `reuseDirectory` are UTF-8. Files of both serve as sources; the
/// second, which may be empty, is only read. A file is written beside its place as
/// "<path>.part" and renamed there when all of it passed every check. What an interrupted
/// run left in the target is used, half-written files too: such a run resumes where it
/// broke off. In the end the target holds the listed files and nothing else, flushed to
/// disk. Where the file system can, a file that `reuseDirectory` holds unchanged becomes
/// a second name of it in the target instead of a copy: after every byte was hashed.
///
/// A file in use is tried again `maxReplaceAttempts` times, a second apart. Runs on the
/// calling thread, and so do the callbacks, which may be empty; only the look at what is
/// on disk takes more threads. The first failure ends the run: false, with the reason
/// assigned to `err` unless null. Files already in place stay.
bool downloadAndAssemble(StorageProvider& provider, const std::string& channel,
                         const std::string& targetDirectory, const PublicKeys& publicKeyHex,
                         const std::string& manifestUrl, const std::string& signatureUrl,
                         const ChunkUrls& chunkUrls, const AssemblyProgress& progress,
                         const InUseCallback& inUse, int maxReplaceAttempts,
                         const std::string& reuseDirectory, std::string* err);

}  // namespace tide
