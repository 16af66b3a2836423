#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>
#include <sstream>
#include <string>

#include "files/disk.h"

namespace files {

namespace fs = std::filesystem;

namespace {

/// The system's list of mounts spells blanks, line ends and backslashes as "\040".
std::string unescaped(const std::string& text) {
    std::string plain;
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (text[at] == '\\' && at + 3 < text.size()) {
            plain += static_cast<char>((text[at + 1] - '0') * 64 + (text[at + 2] - '0') * 8 +
                                       (text[at + 3] - '0'));
            at += 3;
        } else {
            plain += text[at];
        }
    }
    return plain;
}

/// Whether a file system is mounted at a directory or somewhere below.
bool holdsMount(const fs::path& tree) {
    std::error_code error;
    const std::string below = fs::canonical(tree, error).string() + '/';
    std::ifstream mounts("/proc/self/mountinfo");
    for (std::string line; std::getline(mounts, line);) {
        std::istringstream fields(line);
        std::string place;
        for (int field = 0; field < 5; ++field) {
            fields >> place;
        }
        if ((unescaped(place) + '/').starts_with(below)) {
            return true;
        }
    }
    return false;
}

/// Lets the directories of a tree be emptied, as far as they are the user's own. A file
/// needs no permission of its own to go, and may have another name elsewhere.
void makeWritable(const fs::path& tree) {
    if (!isRealDirectory(tree)) {
        return;
    }
    std::error_code ignored;
    fs::permissions(tree, fs::perms::owner_all, fs::perm_options::add | fs::perm_options::nofollow,
                    ignored);
    for (const fs::path& entry : entriesOf(tree)) {
        makeWritable(entry);
    }
}

}  // namespace

fs::path openable(const fs::path& path) {
    return path;
}

EntryKind entryKind(const fs::path& path) {
    std::error_code error;
    switch (fs::symlink_status(path, error).type()) {
        case fs::file_type::not_found:
            return EntryKind::kNothing;
        case fs::file_type::regular:
            return EntryKind::kFile;
        case fs::file_type::directory:
            return EntryKind::kDirectory;
        default:
            return EntryKind::kOther;
    }
}

fs::path behindLink(const fs::path& path) {
    std::error_code error;
    if (entryKind(path) != EntryKind::kOther || !fs::is_directory(path, error)) {
        return path;
    }
    const fs::path target = fs::canonical(path, error);
    return error ? path : target;
}

bool isMountPoint(const fs::path& directory) {
    // Comparing devices with the parent would miss a part of the same file system, and take
    // a subvolume that can be renamed for one that cannot.
    struct statx found = {};
    return ::statx(AT_FDCWD, directory.c_str(), AT_SYMLINK_NOFOLLOW, 0, &found) == 0 &&
           (found.stx_attributes & STATX_ATTR_MOUNT_ROOT) != 0;
}

bool isUnsharedFile(const fs::path& path) {
    std::error_code error;
    return entryKind(path) == EntryKind::kFile && fs::hard_link_count(path, error) == 1;
}

std::optional<std::uint64_t> fileSize(const fs::path& path) {
    std::error_code error;
    if (!fs::is_regular_file(path, error)) {
        return std::nullopt;
    }
    const std::uintmax_t size = fs::file_size(path, error);
    return error ? std::nullopt : std::optional<std::uint64_t>(size);
}

std::vector<fs::path> entriesOf(const fs::path& directory) {
    std::error_code ignored;
    return entriesOf(directory, ignored);
}

std::vector<fs::path> entriesOf(const fs::path& directory, std::error_code& error) {
    std::vector<fs::path> entries;
    for (fs::directory_iterator entry(directory, error), end; !error && entry != end;
         entry.increment(error)) {
        entries.push_back(entry->path());
    }
    return entries;
}

bool makeDirectory(const fs::path& path) {
    std::error_code error;
    return fs::create_directory(path, error);
}

void makeDirectories(const fs::path& path) {
    std::error_code error;
    fs::create_directories(path, error);
}

std::error_code renameEntry(const fs::path& from, const fs::path& to, WhenInUse) {
    std::error_code error;
    fs::rename(from, to, error);
    return error;
}

bool removeTree(const fs::path& path) {
    // What is mounted there is not part of the tree, and would be emptied with it.
    if (isRealDirectory(path) && holdsMount(path)) {
        return false;
    }
    std::error_code error;
    fs::remove_all(path, error);
    if (error) {
        makeWritable(path);
        fs::remove_all(path, error);
    }
    return !error;
}

bool truncateFile(const fs::path& path, std::uint64_t size) {
    std::error_code error;
    fs::resize_file(path, size, error);
    return !error;
}

bool flushToDisk(const fs::path& file) {
    const int descriptor = ::open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW);
    if (descriptor < 0) {
        return false;
    }
    const bool flushed = ::fsync(descriptor) == 0;
    ::close(descriptor);
    return flushed;
}

bool flushFolder(const fs::path& directory) {
    const int descriptor = ::open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0) {
        return false;
    }
    const bool flushed = ::fsync(descriptor) == 0;
    ::close(descriptor);
    return flushed;
}

bool shareFile(const fs::path& file, const fs::path& name) {
    std::error_code error;
    fs::create_hard_link(file, name, error);
    return !error;
}

}  // namespace files
