#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "tide/chunks/local_index.h"
#include "tide/manifest/descriptor.h"
#include "tide/manifest/manifest.h"
#include "tide/replace_file.h"
#include "tide/store/storage_provider.h"
#include "tide/unchanged_files.h"

namespace tide {

/// Called after each chunk that is in its place: chunks done, chunks in all (repeats
/// counted each time), bytes assembled so far.
using AssemblyProgress = std::function<void(std::uint64_t, std::uint64_t, std::int64_t)>;

/// What a run that ended has to tell.
struct AssemblyOutcome {
    /// Files of the target that are still the same ones in the second directory: whoever puts
    /// them in place asks areUnwritten() directly before.
    std::vector<SharedFile> shared = {};
    /// How the files of the target are cut, as the remembered list of the second directory, for
    /// the time when they stand there (encodeCuts).
    std::string cuts = {};
    /// The run failed since the disk has no room for what it would have had to write.
    bool lacksSpace = false;
};

/// What is assembled, from what, and who is told.
struct AssemblyJob {
    ManifestSource source = {};
    /// Where chunks are fetched from; from the bucket when there are none. Borrowed.
    const ChunkUrls& chunkUrls;
    /// Where the files go, and another directory whose files serve as sources; that one is
    /// only read and may be empty. UTF-8.
    std::string targetDirectory = {};
    std::string reuseDirectory = {};
    /// Tells how files of that directory were cut before; called once at most, when the
    /// manifest is known. May be empty.
    std::function<KnownCuts()> known = {};
    /// Used for every transfer of the run; null stands for one of its own. Borrowed; that of
    /// the provider, where that has one.
    ConnectionCache* connections = nullptr;
    /// Called once, when the manifest is known, with the bytes of all its files.
    std::function<void(std::uint64_t)> onSize = {};
    AssemblyProgress progress = {};
    InUseCallback inUse = {};
    /// How often, a second apart, a file in use is tried again.
    int maxReplaceAttempts = 0;
    /// Whether files may become second names of those of the reuse directory.
    bool mayLink = true;
    /// Assigned by the run. Borrowed; may be null.
    AssemblyOutcome* outcome = nullptr;
};

/// Brings a directory to what a channel's manifest lists: fetches the manifest, then puts
/// every file together from chunks, in the manifest's order, taking each from this
/// machine where it is present and from the network where not.
///
/// A file is written beside its place as
/// "<path>.part" and renamed there when all of it passed every check. What an interrupted
/// run left in the target is used, half-written files too: such a run resumes where it
/// broke off. In the end the target holds the listed files and nothing else; flushing
/// them is left to whoever puts them in place. What
/// one of the two directories holds as a whole is taken over first, on all cores
/// (takeUnchanged). Then nothing is fetched where the disk has no room for the rest.
///
/// Runs on the calling thread, and so do the callbacks, which may be empty; only what is on disk
/// is looked at by more threads. The first failure ends the run: false, with the reason assigned
/// to `err` unless null. Files already in place stay.
bool downloadAndAssemble(StorageProvider& provider, const AssemblyJob& job, std::string* err);

/// The same with the job's members one by one.
bool downloadAndAssemble(StorageProvider& provider, const std::string& channel,
                         const std::string& targetDirectory, const PublicKeys& publicKeyHex,
                         const std::string& manifestUrl, const std::string& signatureUrl,
                         const ChunkUrls& chunkUrls, const AssemblyProgress& progress,
                         const InUseCallback& inUse, int maxReplaceAttempts,
                         const std::string& reuseDirectory, std::string* err);

}  // namespace tide
