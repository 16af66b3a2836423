// Preloaded into a program under test, this library numbers the calls by which the
// program changes files or prints lines, and makes one of them the last or a failed
// one. It is told how by environment variables:
//   FAULT_AT      number of the call that is hit, from 1; none is when absent
//   FAULT_ERRNO   the hit call fails with this error number; when absent, the process
//                 is killed just before the call
//   FAULT_NO_USERS  when set, the user database knows nobody
//   FAULT_REPORT  file that gets "<calls made> <name of the call that failed>" at exit
//   FAULT_TRACE   folder in which "calls" gets a line for each change of a name and each
//                 flush, the words between tabs:
//                   born <inode>            a file was made, which may have no name yet
//                   name <inode> <path>     a file got a name
//                   folder <inode> <path>   a folder was made
//                   move <path> <path>, gone <path>
//                   bytes <inode> <file>    a file was flushed; <file> is a copy of it
//                   flush <path>, all       a folder, everything was flushed
//
// Opening the configuration to read it counts as well, for what cannot be read then must
// not be written over later.
//
// The numbering does not depend on how a reply is cut into packets: writes to one file
// count once at its start and once for each kWriteStep bytes.

#include <dlfcn.h>
// Without the declarations of open(), whose mode is left out by most callers.
#include <linux/fcntl.h>
#include <pwd.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

namespace {

constexpr off_t kWriteStep = off_t{512} * 1024;

long numberFrom(const char* variable) {
    const char* text = std::getenv(variable);
    return text == nullptr ? 0 : std::strtol(text, nullptr, 10);
}

class Plan {
public:
    /// Counts `calls` calls of that name. False when one of them is to fail; errno is
    /// then set.
    bool pass(const char* name, long calls = 1) {
        const long before = made.fetch_add(calls);
        if (at <= before || at > before + calls) {
            return true;
        }
        if (error == 0) {
            ::syscall(SYS_kill, ::getpid(), SIGKILL);
        }
        failed = name;
        errno = error;
        return false;
    }

    ~Plan() {
        const char* report = std::getenv("FAULT_REPORT");
        if (report == nullptr) {
            return;
        }
        const std::string text = std::to_string(made) + ' ' + failed.load();
        const long file = ::syscall(SYS_openat, AT_FDCWD, report, O_WRONLY | O_CREAT, 0600);
        ::syscall(SYS_write, file, text.data(), text.size());
        ::syscall(SYS_close, file);
    }

private:
    const long at = numberFrom("FAULT_AT");
    const int error = static_cast<int>(numberFrom("FAULT_ERRNO"));
    std::atomic<long> made{0};
    std::atomic<const char*> failed{"none"};
};

std::string absolute(int folder, const char* path) {
    std::array<char, 4096> base = {};
    if (path[0] == '/') {
        return path;
    }
    const std::string link =
        folder == AT_FDCWD ? "/proc/self/cwd" : "/proc/self/fd/" + std::to_string(folder);
    return ::readlink(link.c_str(), base.data(), base.size() - 1) < 0
               ? path
               : std::string(base.data()) + '/' + path;
}

/// What FAULT_TRACE asks for. Its own calls are not seen by the functions below.
class Trace {
public:
    void note(const std::string& line) const {
        if (!folder.empty()) {
            append(folder + "/calls", line + '\n');
        }
    }

    /// Notes a call that made or named the file at the path.
    void noteFile(const char* word, const std::string& path) const {
        struct stat about = {};
        if (!folder.empty() && ::lstat(path.c_str(), &about) == 0) {
            note(std::string(word) + '\t' + std::to_string(about.st_ino) + '\t' + path);
        }
    }

    void noteBirth(int file) const {
        struct stat about = {};
        if (!folder.empty() && ::fstat(file, &about) == 0) {
            note("born\t" + std::to_string(about.st_ino));
        }
    }

    void noteFlush(int file) {
        struct stat about = {};
        if (folder.empty() || ::fstat(file, &about) != 0) {
            return;
        }
        if (S_ISDIR(about.st_mode)) {
            note("flush\t" + absolute(file, "."));
        } else if (S_ISREG(about.st_mode)) {
            const std::string copy = folder + '/' + std::to_string(++copies);
            const std::string original = "/proc/self/fd/" + std::to_string(file);
            const long from = ::syscall(SYS_openat, AT_FDCWD, original.c_str(), O_RDONLY);
            std::string bytes(static_cast<std::size_t>(about.st_size), '\0');
            ::syscall(SYS_read, from, bytes.data(), bytes.size());
            ::syscall(SYS_close, from);
            append(copy, bytes);
            note("bytes\t" + std::to_string(about.st_ino) + '\t' + copy);
        }
    }

private:
    static void append(const std::string& path, const std::string& text) {
        const long file =
            ::syscall(SYS_openat, AT_FDCWD, path.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0600);
        ::syscall(SYS_write, file, text.data(), text.size());
        ::syscall(SYS_close, file);
    }

    const std::string folder =
        std::getenv("FAULT_TRACE") == nullptr ? "" : std::getenv("FAULT_TRACE");
    std::atomic<int> copies{0};
};

Trace& trace() {
    static Trace instance;
    return instance;
}

Plan& plan() {
    static Plan instance;
    return instance;
}

template <typename Function>
Function* real(const char* name) {
    return reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name));
}

/// Counts the call and makes it, unless it is to fail.
template <typename... Arguments>
int counted(const char* name, Arguments... arguments) {
    return plan().pass(name) ? real<int(Arguments...)>(name)(arguments...) : -1;
}

/// Whether a write of `size` bytes at `position` may go on; other than regular files
/// do not count.
bool passWrite(const char* name, int file, off_t position, std::size_t size) {
    struct stat about = {};
    if (::fstat(file, &about) != 0 || !S_ISREG(about.st_mode)) {
        return true;
    }
    const off_t end = position + static_cast<off_t>(size);
    const long steps = end / kWriteStep - position / kWriteStep;
    return plan().pass(name, steps + (position == 0 ? 1 : 0));
}

/// open() and its like by name; the mode has a meaning only where a file is created.
template <typename... Arguments>
int opened(const char* name, int flags, int folder, const char* path, Arguments... arguments) {
    const bool nameless = (flags & O_TMPFILE) == O_TMPFILE;
    const bool creates = (flags & O_CREAT) != 0 || nameless;
    const bool counts = creates || std::string_view(path).ends_with("/config.json");
    if (counts && !plan().pass(name)) {
        return -1;
    }
    const bool isNew = creates && (nameless || ::faccessat(folder, path, F_OK, 0) != 0);
    const int file = real<int(Arguments...)>(name)(arguments...);
    if (isNew && file >= 0) {
        trace().noteBirth(file);
        if (!nameless) {
            trace().noteFile("name", absolute(folder, path));
        }
    }
    return file;
}

/// What a call came back with; a success is noted.
int noted(int result, const std::string& line) {
    if (result == 0) {
        trace().note(line);
    }
    return result;
}

int named(int result, const char* word, const std::string& path) {
    if (result == 0) {
        trace().noteFile(word, path);
    }
    return result;
}

int flushed(const char* name, int file) {
    if (!plan().pass(name)) {
        return -1;
    }
    trace().noteFlush(file);
    return 0;
}

std::FILE* openStream(const char* name, const char* path, const char* mode) {
    if (mode[0] != 'r' && !plan().pass(name)) {
        return nullptr;
    }
    const bool isNew = mode[0] != 'r' && ::access(path, F_OK) != 0;
    std::FILE* stream = real<std::FILE*(const char*, const char*)>(name)(path, mode);
    if (isNew && stream != nullptr) {
        trace().noteBirth(::fileno(stream));
        trace().noteFile("name", absolute(AT_FDCWD, path));
    }
    return stream;
}

}  // namespace

extern "C" {

int open(const char* path, int flags, mode_t mode) {
    return opened("open", flags, AT_FDCWD, path, path, flags, mode);
}

int openat(int folder, const char* path, int flags, mode_t mode) {
    return opened("openat", flags, folder, path, folder, path, flags, mode);
}

std::FILE* fopen(const char* path, const char* mode) {
    return openStream("fopen", path, mode);
}

ssize_t write(int file, const void* bytes, std::size_t size) {
    const off_t position = ::lseek(file, 0, SEEK_CUR);
    return passWrite("write", file, position, size)
               ? real<ssize_t(int, const void*, std::size_t)>("write")(file, bytes, size)
               : -1;
}

ssize_t pwrite(int file, const void* bytes, std::size_t size, off_t offset) {
    return passWrite("pwrite", file, offset, size)
               ? real<ssize_t(int, const void*, std::size_t, off_t)>("pwrite")(file, bytes, size,
                                                                               offset)
               : -1;
}

ssize_t writev(int file, const iovec* parts, int count) {
    std::size_t size = 0;
    for (int part = 0; part < count; ++part) {
        size += parts[part].iov_len;
    }
    return passWrite("writev", file, ::lseek(file, 0, SEEK_CUR), size)
               ? real<ssize_t(int, const iovec*, int)>("writev")(file, parts, count)
               : -1;
}

int fflush(std::FILE* stream) {
    if ((stream == stdout || stream == stderr) && !plan().pass("fflush")) {
        return EOF;
    }
    return real<int(std::FILE*)>("fflush")(stream);
}

// What a killed process wrote stays with the system, so that its way to the disk
// changes nothing here and would only take time.

int fsync(int file) {
    struct stat about = {};
    const bool isFolder = ::fstat(file, &about) == 0 && S_ISDIR(about.st_mode);
    return flushed(isFolder ? "fsync-folder" : "fsync", file);
}

int fdatasync(int file) {
    return flushed("fdatasync", file);
}

int syncfs(int) noexcept {
    return noted(plan().pass("syncfs") ? 0 : -1, "all");
}

int ftruncate(int file, off_t size) noexcept {
    return counted("ftruncate", file, size);
}

int truncate(const char* path, off_t size) noexcept {
    return counted("truncate", path, size);
}

int rename(const char* from, const char* to) noexcept {
    return noted(counted("rename", from, to),
                 "move\t" + absolute(AT_FDCWD, from) + '\t' + absolute(AT_FDCWD, to));
}

int renameat2(int fromFolder, const char* from, int toFolder, const char* to,
              unsigned int flags) noexcept {
    return noted(counted("renameat2", fromFolder, from, toFolder, to, flags),
                 "move\t" + absolute(fromFolder, from) + '\t' + absolute(toFolder, to));
}

int link(const char* from, const char* to) noexcept {
    return named(counted("link", from, to), "name", absolute(AT_FDCWD, to));
}

int linkat(int fromFolder, const char* from, int toFolder, const char* to, int flags) noexcept {
    return named(counted("linkat", fromFolder, from, toFolder, to, flags), "name",
                 absolute(toFolder, to));
}

int unlink(const char* path) noexcept {
    return noted(counted("unlink", path), "gone\t" + absolute(AT_FDCWD, path));
}

int unlinkat(int folder, const char* path, int flags) noexcept {
    return noted(counted("unlinkat", folder, path, flags), "gone\t" + absolute(folder, path));
}

int rmdir(const char* path) noexcept {
    return noted(counted("rmdir", path), "gone\t" + absolute(AT_FDCWD, path));
}

int remove(const char* path) noexcept {
    return noted(counted("remove", path), "gone\t" + absolute(AT_FDCWD, path));
}

int mkdir(const char* path, mode_t mode) noexcept {
    return named(counted("mkdir", path, mode), "folder", absolute(AT_FDCWD, path));
}

int chmod(const char* path, mode_t mode) noexcept {
    return counted("chmod", path, mode);
}

int fchmod(int file, mode_t mode) noexcept {
    return counted("fchmod", file, mode);
}

int getpwuid_r(uid_t user, passwd* entry, char* texts, std::size_t size, passwd** found) {
    if (std::getenv("FAULT_NO_USERS") != nullptr) {
        *found = nullptr;
        return 0;
    }
    return real<int(uid_t, passwd*, char*, std::size_t, passwd**)>("getpwuid_r")(user, entry, texts,
                                                                                 size, found);
}

// The same where files may be large, which they may here anyway.
int open64(const char*, int, mode_t) __attribute__((alias("open")));
std::FILE* fopen64(const char*, const char*) __attribute__((alias("fopen")));
int ftruncate64(int, off64_t) noexcept __attribute__((alias("ftruncate")));
int truncate64(const char*, off64_t) noexcept __attribute__((alias("truncate")));

}  // extern "C"
