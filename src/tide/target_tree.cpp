#include "tide/target_tree.h"

#include <utility>

#include "files/disk.h"
#include "files/safe_path.h"
#include "files/utf8_path.h"
#include "tide/error.h"

namespace tide {

namespace {

namespace fs = std::filesystem;

constexpr std::string_view kPartSuffix = ".part";
/// Leftovers kept at a time. One run leaves one at most.
constexpr unsigned kMaxAside = 100;

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
    const files::EntryKind kind = files::entryKind(path);
    return kind == files::EntryKind::kNothing || kind == files::EntryKind::kFile ||
           files::removeTree(path);
}

bool ensureFolder(const fs::path& path) {
    return files::isRealDirectory(path) ||
           (files::removeTree(path) &&
            (files::makeDirectory(path) || files::isRealDirectory(path)));
}

}  // namespace

TargetTree::TargetTree(fs::path targetDirectory, const std::vector<ManifestFile>& files)
    : directory(std::move(targetDirectory)) {
    for (const ManifestFile& file : files) {
        const std::string path = files::comparablePath(file.path);
        for (std::string& folder : foldersAbove(path)) {
            folders.insert(std::move(folder));
        }
        parts.insert(files::comparablePath(file.path + std::string(kPartSuffix)));
        listed.insert(path);
    }
}

fs::path TargetTree::destination(const ManifestFile& file) const {
    return directory / files::utf8Path(file.path);
}

fs::path TargetTree::part(const ManifestFile& file) const {
    return directory / files::utf8Path(file.path + std::string(kPartSuffix));
}

bool TargetTree::makeFolders(const ManifestFile& file) const {
    const std::size_t end = file.path.rfind('/');
    const std::string innermost = end == std::string::npos ? "" : file.path.substr(0, end);
    if (ready.contains(innermost)) {
        return true;
    }
    files::makeDirectories(directory);
    for (const std::string& folder : foldersAbove(file.path)) {
        const std::string name = files::comparablePath(folder);
        // A folder in the place of a listed file would be removed by that file's turn, with
        // all that was assembled in it.
        if (listed.contains(name) || parts.contains(name) ||
            !ensureFolder(directory / files::utf8Path(folder))) {
            return false;
        }
    }
    ready.insert(innermost);
    return true;
}

bool TargetTree::makeWay(const ManifestFile& file) const {
    // Links above all: what is written or renamed here must not end somewhere else.
    return makeFolders(file) && clearForFile(destination(file)) && clearForFile(part(file));
}

fs::path TargetTree::setAside(const fs::path& leftover) const {
    for (unsigned number = 1; number <= kMaxAside; ++number) {
        const std::string name = "leftover-" + std::to_string(number);
        fs::path aside = directory / name;
        if (listed.contains(name) || parts.contains(name) || folders.contains(name) ||
            files::entryKind(aside) != files::EntryKind::kNothing) {
            continue;
        }
        if (!files::renameEntry(leftover, aside)) {
            return aside;
        }
        break;
    }
    files::removeTree(leftover);
    return {};
}

bool TargetTree::removeStrays(std::string* err) const {
    return sweep(directory, {}, err);
}

bool TargetTree::sweep(const fs::path& folder, const std::string& prefix, std::string* err) const {
    for (const fs::path& entry : files::entriesOf(files::openable(folder))) {
        const std::string path = files::comparablePath(prefix + files::utf8Text(entry.filename()));
        const bool inside = folders.contains(path) && files::isRealDirectory(entry);
        if (inside) {
            if (!sweep(entry, path + "/", err)) {
                return false;
            }
        } else if (!listed.contains(path) && !files::removeTree(entry)) {
            return fail(err, "cannot remove ", files::utf8Text(folder / entry.filename()));
        }
    }
    return true;
}

}  // namespace tide
