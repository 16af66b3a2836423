#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "files/share_file.h"
#include "tide/chunks/local_index.h"
#include "tide/manifest/manifest.h"
#include "tide/target_tree.h"

namespace tide {

/// A file that is the same one in the target and in the directory it was taken from.
struct SharedFile {
    /// Relative, as the manifest has it.
    std::string path;
    /// What it showed when its bytes had been hashed.
    files::FileStamp stamp;
};

struct UnchangedFiles {
    /// By place in the manifest: the file stands at its destination, every byte hashed.
    std::vector<bool> inPlace;
    std::vector<SharedFile> shared;
};

/// A directory, and how its files are cut.
struct IndexedDirectory {
    std::filesystem::path root;
    std::vector<IndexedFile> files;
};

/// Puts in place, on all cores, what the manifest lists and one of the two directories holds
/// as a whole: in the target itself (`staged`), or in the directory to reuse (`installed`),
/// under whichever name.
///
/// A file is taken over by the cheapest way there is: as a clone, which is hashed; as a
/// second name, if it is large and nobody has it open or mapped for writing, neither before
/// it is hashed nor after; else, if it is small, as a copy of hashed bytes. What is not to be
/// had so is left alone, also when something else is in its way. Without `mayLink` no file
/// gets a second name.
UnchangedFiles takeUnchanged(const std::vector<ManifestFile>& files, const TargetTree& target,
                             const IndexedDirectory& staged, const IndexedDirectory& installed,
                             bool mayLink);

/// Whether these files of the target are what they were when they were hashed, and nobody is
/// about to write into them: to be asked directly before they become the build.
bool areUnwritten(const std::filesystem::path& target, const std::vector<SharedFile>& shared);

}  // namespace tide
