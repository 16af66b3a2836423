#include "tide/target_tree.h"

#include <utility>

#include "tide/disk.h"
#include "tide/error.h"
#include "tide/safe_path.h"
#include "tide/utf8_path.h"

namespace tide {

namespace {

namespace fs = std::filesystem;

constexpr std::string_view kPartSuffix = ".part";
/// Leftovers kept at a time. One run leaves one at most.
constexpr unsigned kMostAside = 100;

/// The folders above a relative path, outermost first.
std::vector<std::string> foldersAbove(const std::string& path) {
    std::vector<std::string> above;
    for (std::size_t slash = path.find('/'); slash != std::string::npos;
         slash = path.find('/', slash + 1)) {
        above.push_back(path.substr(0, slash));
    }
    return above;
}

/// Leaves at the path a regular file or nothing.
bool clearForFile(const fs::path& path) {
    const EntryKind kind = entryKind(path);
    return kind == EntryKind::kNothing || kind == EntryKind::kFile || removeTree(path);
}

bool ensureFolder(const fs::path& path) {
    return isRealDirectory(path) ||
           (removeTree(path) && (makeDirectory(path) || isRealDirectory(path)));
}

}  // namespace

TargetTree::TargetTree(fs::path targetDirectory, const std::vector<ManifestFile>& files)
    : directory(std::move(targetDirectory)) {
    for (const ManifestFile& file : files) {
        const std::string path = comparablePath(file.path);
        for (std::string& folder : foldersAbove(path)) {
            folders.insert(std::move(folder));
        }
        parts.insert(comparablePath(file.path + std::string(kPartSuffix)));
        listed.insert(path);
    }
}

fs::path TargetTree::destination(const ManifestFile& file) const {
    return directory / utf8Path(file.path);
}

fs::path TargetTree::part(const ManifestFile& file) const {
    return directory / utf8Path(file.path + std::string(kPartSuffix));
}

bool TargetTree::makeWay(const ManifestFile& file) const {
    makeDirectories(directory);
    for (const std::string& folder : foldersAbove(file.path)) {
        const std::string name = comparablePath(folder);
        if (listed.contains(name) || parts.contains(name) ||
            !ensureFolder(directory / utf8Path(folder))) {
            return false;
        }
    }
    return clearForFile(destination(file)) && clearForFile(part(file));
}

fs::path TargetTree::setAside(const fs::path& leftover) const {
    for (unsigned number = 1; number <= kMostAside; ++number) {
        const std::string name = "leftover-" + std::to_string(number);
        fs::path aside = directory / name;
        if (listed.contains(name) || parts.contains(name) || folders.contains(name) ||
            entryKind(aside) != EntryKind::kNothing) {
            continue;
        }
        if (!renameEntry(leftover, aside)) {
            return aside;
        }
        break;
    }
    removeTree(leftover);
    return {};
}

bool TargetTree::removeStrays(std::string* err) const {
    return sweep(directory, {}, err);
}

bool TargetTree::sweep(const fs::path& folder, const std::string& prefix, std::string* err) const {
    for (const fs::path& entry : entriesOf(folder)) {
        const std::string path = comparablePath(prefix + utf8Text(entry.filename()));
        const bool inside = folders.contains(path) && isRealDirectory(entry);
        if (inside) {
            if (!sweep(entry, path + "/", err)) {
                return false;
            }
        } else if (!listed.contains(path) && !removeTree(entry)) {
            return fail(err, "cannot remove ", utf8Text(entry));
        }
    }
    return true;
}

}  // namespace tide
