// Preloaded into a program under test, this library numbers the calls by which the
// program changes files or prints lines, and makes one of them the last or a failed
// one. It is told how by environment variables:
//   FAULT_AT      number of the call that is hit, from 1; none is when absent
//   FAULT_ERRNO   the hit call fails with this error number; when absent, the process
//                 is killed just before the call
//   FAULT_NO_USERS  when set, the user database knows nobody
//   FAULT_REPORT  file that gets "<calls made> <name of the call that failed>" at exit
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
int opened(const char* name, const char* path, int flags, Arguments... arguments) {
    const bool counts = (flags & O_CREAT) != 0 || (flags & O_TMPFILE) == O_TMPFILE ||
                        std::string_view(path).ends_with("/config.json");
    return counts && !plan().pass(name) ? -1 : real<int(Arguments...)>(name)(arguments...);
}

std::FILE* openStream(const char* name, const char* path, const char* mode) {
    if (mode[0] != 'r' && !plan().pass(name)) {
        return nullptr;
    }
    return real<std::FILE*(const char*, const char*)>(name)(path, mode);
}

}  // namespace

extern "C" {

int open(const char* path, int flags, mode_t mode) {
    return opened("open", path, flags, path, flags, mode);
}

int open64(const char* path, int flags, mode_t mode) {
    return opened("open64", path, flags, path, flags, mode);
}

int openat(int folder, const char* path, int flags, mode_t mode) {
    return opened("openat", path, flags, folder, path, flags, mode);
}

std::FILE* fopen(const char* path, const char* mode) {
    return openStream("fopen", path, mode);
}

std::FILE* fopen64(const char* path, const char* mode) {
    return openStream("fopen64", path, mode);
}

ssize_t write(int file, const void* bytes, std::size_t size) {
    const off_t position = ::lseek(file, 0, SEEK_CUR);
    return passWrite("write", file, position, size)
               ? real<ssize_t(int, const void*, std::size_t)>("write")(file, bytes, size)
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
    return plan().pass(isFolder ? "fsync-folder" : "fsync") ? 0 : -1;
}

int fdatasync(int) {
    return plan().pass("fdatasync") ? 0 : -1;
}

int syncfs(int) noexcept {
    return plan().pass("syncfs") ? 0 : -1;
}

int ftruncate(int file, off_t size) noexcept {
    return counted("ftruncate", file, size);
}

int ftruncate64(int file, off64_t size) noexcept {
    return counted("ftruncate64", file, size);
}

int truncate(const char* path, off_t size) noexcept {
    return counted("truncate", path, size);
}

int truncate64(const char* path, off64_t size) noexcept {
    return counted("truncate64", path, size);
}

int rename(const char* from, const char* to) noexcept {
    return counted("rename", from, to);
}

int renameat2(int fromFolder, const char* from, int toFolder, const char* to,
              unsigned int flags) noexcept {
    return counted("renameat2", fromFolder, from, toFolder, to, flags);
}

int link(const char* from, const char* to) noexcept {
    return counted("link", from, to);
}

int linkat(int fromFolder, const char* from, int toFolder, const char* to, int flags) noexcept {
    return counted("linkat", fromFolder, from, toFolder, to, flags);
}

int unlink(const char* path) noexcept {
    return counted("unlink", path);
}

int unlinkat(int folder, const char* path, int flags) noexcept {
    return counted("unlinkat", folder, path, flags);
}

int rmdir(const char* path) noexcept {
    return counted("rmdir", path);
}

int remove(const char* path) noexcept {
    return counted("remove", path);
}

int mkdir(const char* path, mode_t mode) noexcept {
    return counted("mkdir", path, mode);
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

}  // extern "C"
