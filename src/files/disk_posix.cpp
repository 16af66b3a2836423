#include <fcntl.h>
#include <sys/stat.h>
#include <sys/utsname.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <fstream>
#include <sstream>
#include <string>
#include <string_view>

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

/// So many entries are flushed one by one: a flush of the whole file system also waits
/// for what other programs have written.
constexpr std::size_t kFewEntries = 32;

/// Calls `flush` with a descriptor of what stands at the path.
template <typename Flush>
bool flushed(const fs::path& path, int flags, Flush flush) {
    const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | flags);
    if (descriptor < 0) {
        return false;
    }
    const bool done = flush(descriptor) == 0;
    const int error = errno;
    ::close(descriptor);
    errno = error;
    return done;
}

/// Linux 5.8 and later: older ones say that all is well when bytes were lost.
bool syncfsTellsOfFailures() {
    utsname system = {};
    if (::uname(&system) != 0) {
        return false;
    }
    const std::string_view release(system.release);
    int major = 0;
    int minor = 0;
    const auto [dot, bad] = std::from_chars(release.begin(), release.end(), major);
    if (bad == std::errc() && dot != release.end()) {
        std::from_chars(dot + 1, release.end(), minor);
    }
    return major > 5 || (major == 5 && minor >= 8);
}

/// Directories and regular files of a tree, its root included, `most` of them at most;
/// nothing when a directory cannot be read.
std::vector<fs::path> wholeTree(const fs::path& root, std::size_t most) {
    std::vector<fs::path> found{root};
    std::error_code error;
    for (fs::recursive_directory_iterator entry(root, error), end;
         !error && entry != end && found.size() < most; entry.increment(error)) {
        const EntryKind kind = entryKind(entry->path());
        if (kind == EntryKind::kFile || kind == EntryKind::kDirectory) {
            found.push_back(entry->path());
        }
    }
    return error ? std::vector<fs::path>() : found;
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
    struct stat about = {};
    return ::lstat(path.c_str(), &about) == 0 && S_ISREG(about.st_mode) && about.st_nlink == 1;
}

std::optional<std::uint64_t> fileSize(const fs::path& path) {
    struct stat about = {};
    return ::stat(path.c_str(), &about) == 0 && S_ISREG(about.st_mode)
               ? std::optional(static_cast<std::uint64_t>(about.st_size))
               : std::nullopt;
}

std::optional<std::uint64_t> freeSpace(const fs::path& directory) {
    std::error_code error;
    const fs::space_info space = fs::space(directory, error);
    return error ? std::nullopt : std::optional(std::uint64_t{space.available});
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

bool flushToDisk(const fs::path& file) {
    return flushed(file, O_NOFOLLOW, ::fsync);
}

bool flushFolder(const fs::path& folder) {
    return flushed(folder, O_DIRECTORY, ::fsync) || errno == EACCES || errno == EINVAL ||
           errno == ENOTSUP || errno == ENOSYS;
}

bool flushTree(const fs::path& directory) {
    const bool many = wholeTree(directory, kFewEntries + 1).size() > kFewEntries;
    if (many && syncfsTellsOfFailures() && flushed(directory, O_DIRECTORY, ::syncfs)) {
        return true;
    }
    // Also after a failure: it may have been about somebody else's file.
    const auto entries = wholeTree(directory, SIZE_MAX);
    return !entries.empty() &&
           std::all_of(entries.begin(), entries.end(), [](const fs::path& entry) {
               return isRealDirectory(entry) ? flushFolder(entry) : flushToDisk(entry);
           });
}

}  // namespace files
