#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "tide/manifest/manifest.h"

namespace tide {

/// The directory that files are assembled in. It may hold what an interrupted run left,
/// or anything else; nothing in it is followed out of it, and in the end it holds what
/// the manifest lists and nothing more.
class TargetTree {
public:
    /// `directory` is where the files go; `files` is read here and not kept.
    TargetTree(std::filesystem::path directory, const std::vector<ManifestFile>& files);

    const std::filesystem::path& root() const { return directory; }

    /// Where a file goes, and the file beside it that is written first.
    std::filesystem::path destination(const ManifestFile& file) const;
    std::filesystem::path part(const ManifestFile& file) const;

    /// Makes the folders of a file. False when it cannot be, or when the manifest itself has a
    /// file where a folder is needed. One thread at a time.
    bool makeFolders(const ManifestFile& file) const;

    /// Makes the folders of a file, and lets at its destination and its part stand
    /// nothing but a regular file; links and strays in the way are removed. False when
    /// one of these cannot be.
    bool makeWay(const ManifestFile& file) const;

    /// Renames a leftover to a name that no file of the manifest takes, so that its
    /// bytes outlive the reuse of its name, and returns that name. Empty when it could
    /// not be renamed; then it is removed.
    std::filesystem::path setAside(const std::filesystem::path& leftover) const;

    /// Removes whatever the manifest does not list, empty folders included. On failure
    /// `err`, unless null, is assigned "cannot remove <path>".
    bool removeStrays(std::string* err) const;

private:
    bool sweep(const std::filesystem::path& folder, const std::string& prefix,
               std::string* err) const;

    std::filesystem::path directory;
    /// Relative, as comparablePath gives them: listed files, the names of their parts,
    /// and the folders above them.
    std::unordered_set<std::string> listed;
    std::unordered_set<std::string> parts;
    std::unordered_set<std::string> folders;
    /// Folders that were made or found in this run, as the manifest spells them.
    mutable std::unordered_set<std::string> ready;
};

}  // namespace tide
