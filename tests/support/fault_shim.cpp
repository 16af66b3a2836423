// Preloaded into a program under test, this library numbers the calls by which the
// program changes files or prints lines, and makes one of them the last or a failed
// one. It is told how by environment variables:
//   FAULT_AT      number of the call that is hit, from 1; none is when absent
//   FAULT_ERRNO   the hit call fails with this error number; when absent, the process
//                 is killed just before the call
//   FAULT_REPORT  file that gets "<calls made> <name of the call that failed>" at exit
//
// The numbering does not depend on how a reply is cut into packets: writes to one file
// count once at its start and once for each kWriteStep bytes.

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <string>

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

/// The function of that name that the program would have called.
template <typename Function>
Function* real(const char* name) {
    return reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name));
}

/// Counts the call and makes it, unless it is to fail.
template <typename Function, typename... Arguments>
int counted(const char* name, Arguments... arguments) {
    return plan().pass(name) ? real<Function>(name)(arguments...) : -1;
}

bool creates(int flags) {
    return (flags & O_CREAT) != 0 || (flags & O_TMPFILE) == O_TMPFILE;
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

/// open() and open64() by name.
int openNamed(const char* name, const char* path, int flags, mode_t mode) {
    if (creates(flags) && !plan().pass(name)) {
        return -1;
    }
    return real<int(const char*, int, ...)>(name)(path, flags, mode);
}

int openAtNamed(const char* name, int folder, const char* path, int flags, mode_t mode) {
    if (creates(flags) && !plan().pass(name)) {
        return -1;
    }
    return real<int(int, const char*, int, ...)>(name)(folder, path, flags, mode);
}

std::FILE* openStream(const char* name, const char* path, const char* mode) {
    if (mode[0] != 'r' && !plan().pass(name)) {
        return nullptr;
    }
    return real<std::FILE*(const char*, const char*)>(name)(path, mode);
}

mode_t modeFrom(int flags, std::va_list& arguments) {
    return creates(flags) ? va_arg(arguments, mode_t) : mode_t{0};
}

}  // namespace

extern "C" {

int open(const char* path, int flags, ...) {
    std::va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = modeFrom(flags, arguments);
    va_end(arguments);
    return openNamed("open", path, flags, mode);
}

int open64(const char* path, int flags, ...) {
    std::va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = modeFrom(flags, arguments);
    va_end(arguments);
    return openNamed("open64", path, flags, mode);
}

int openat(int folder, const char* path, int flags, ...) {
    std::va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = modeFrom(flags, arguments);
    va_end(arguments);
    return openAtNamed("openat", folder, path, flags, mode);
}

int openat64(int folder, const char* path, int flags, ...) {
    std::va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = modeFrom(flags, arguments);
    va_end(arguments);
    return openAtNamed("openat64", folder, path, flags, mode);
}

/// The standard library's streams open their files by this.
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

ssize_t pwrite(int file, const void* bytes, std::size_t size, off_t position) {
    return passWrite("pwrite", file, position, size)
               ? real<ssize_t(int, const void*, std::size_t, off_t)>("pwrite")(file, bytes, size,
                                                                               position)
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

/// The C library writes a stream's lines by an inner call, so that printing is caught
/// here.
int fflush(std::FILE* stream) {
    if ((stream == stdout || stream == stderr) && !plan().pass("fflush")) {
        return EOF;
    }
    return real<int(std::FILE*)>("fflush")(stream);
}

// What a killed process wrote stays with the system, so that its way to the disk
// changes nothing here and would only take time.

int fsync(int) {
    return plan().pass("fsync") ? 0 : -1;
}

int fdatasync(int) {
    return plan().pass("fdatasync") ? 0 : -1;
}

int ftruncate(int file, off_t size) noexcept {
    return counted<int(int, off_t)>("ftruncate", file, size);
}

int ftruncate64(int file, off64_t size) noexcept {
    return counted<int(int, off64_t)>("ftruncate64", file, size);
}

int truncate(const char* path, off_t size) noexcept {
    return counted<int(const char*, off_t)>("truncate", path, size);
}

int truncate64(const char* path, off64_t size) noexcept {
    return counted<int(const char*, off64_t)>("truncate64", path, size);
}

int rename(const char* from, const char* to) noexcept {
    return counted<int(const char*, const char*)>("rename", from, to);
}

int renameat(int fromFolder, const char* from, int toFolder, const char* to) noexcept {
    return counted<int(int, const char*, int, const char*)>("renameat", fromFolder, from, toFolder,
                                                            to);
}

int renameat2(int fromFolder, const char* from, int toFolder, const char* to,
              unsigned int flags) noexcept {
    return counted<int(int, const char*, int, const char*, unsigned int)>(
        "renameat2", fromFolder, from, toFolder, to, flags);
}

int link(const char* from, const char* to) noexcept {
    return counted<int(const char*, const char*)>("link", from, to);
}

int linkat(int fromFolder, const char* from, int toFolder, const char* to, int flags) noexcept {
    return counted<int(int, const char*, int, const char*, int)>("linkat", fromFolder, from,
                                                                 toFolder, to, flags);
}

int unlink(const char* path) noexcept {
    return counted<int(const char*)>("unlink", path);
}

int unlinkat(int folder, const char* path, int flags) noexcept {
    return counted<int(int, const char*, int)>("unlinkat", folder, path, flags);
}

int rmdir(const char* path) noexcept {
    return counted<int(const char*)>("rmdir", path);
}

int remove(const char* path) noexcept {
    return counted<int(const char*)>("remove", path);
}

int mkdir(const char* path, mode_t mode) noexcept {
    return counted<int(const char*, mode_t)>("mkdir", path, mode);
}

int mkdirat(int folder, const char* path, mode_t mode) noexcept {
    return counted<int(int, const char*, mode_t)>("mkdirat", folder, path, mode);
}

int chmod(const char* path, mode_t mode) noexcept {
    return counted<int(const char*, mode_t)>("chmod", path, mode);
}

int fchmod(int file, mode_t mode) noexcept {
    return counted<int(int, mode_t)>("fchmod", file, mode);
}

}  // extern "C"
