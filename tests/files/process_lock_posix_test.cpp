#include <grp.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QFile>
#include <filesystem>
#include <functional>

#include "files/process_lock.h"
#include "support/process_runner.h"

namespace quorvelle::testing {

namespace {

using Lock = ProcessLock::Outcome;
namespace fs = std::filesystem;

/// What a process finds that file permissions hold for: another user's where the tests run
/// as root, else one of the same user.
Lock asAPlainUser(const std::function<Lock()>& look) {
    constexpr uid_t kNobody = 65534;
    const pid_t child = ::fork();
    if (child == 0) {
        const bool plain = ::geteuid() != 0 || (::setgroups(0, nullptr) == 0 &&
                                                ::setgid(kNobody) == 0 && ::setuid(kNobody) == 0);
        ::_exit(plain ? int(look()) : 99);
    }
    int status = 0;
    EXPECT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) != 99);
    return Lock(WEXITSTATUS(status));
}

void setMode(const QString& path, unsigned mode) {
    fs::permissions(path.toStdString(), fs::perms(mode));
}

fs::perms modeOf(const QString& path) {
    return fs::status(path.toStdString()).permissions();
}

}  // namespace

TEST(ProcessLock, IsOneForAllWhoMayReadItsFile) {
    enum class File { kNone, kLeft, kLocked };
    struct Row {
        const char* name;
        unsigned folder;
        File file;
        unsigned mode;
        Lock outcome;
    };
    for (const Row& row :
         {Row{"holder's file", 0777, File::kLocked, 0444, Lock::kBusy},
          Row{"holder's file as in /tmp", 01777, File::kLocked, 0644, Lock::kBusy},
          Row{"holder's file and folder", 0555, File::kLocked, 0444, Lock::kBusy},
          Row{"left behind", 0555, File::kLeft, 0444, Lock::kHeld},
          Row{"left behind as in /tmp", 01777, File::kLeft, 0444, Lock::kHeld},
          Row{"unreadable", 0777, File::kLeft, 0, Lock::kRefused},
          Row{"no file and none can be made", 0555, File::kNone, 0, Lock::kNoPlace},
          Row{"unreachable", 0, File::kNone, 0, Lock::kNoPlace}}) {
        SCOPED_TRACE(row.name);
        const Sandbox sandbox;
        sandbox.write("folder/other", "");
        setMode(sandbox.path("."), 0755);
        const QString path = sandbox.path("folder/lock");
        ProcessLock holder;
        if (row.file == File::kLocked) {
            ASSERT_EQ(holder.tryAcquire(path), Lock::kHeld);
        } else if (row.file == File::kLeft) {
            sandbox.write("folder/lock", "");
        }
        if (row.file != File::kNone) {
            setMode(path, row.mode);
        }
        setMode(sandbox.path("folder"), row.folder);
        const auto look = [&] { return ProcessLock().tryAcquire(path); };
        EXPECT_EQ(asAPlainUser(look), row.outcome);
        setMode(sandbox.path("folder"), 0755);
    }
}

TEST(ProcessLock, GivesItsFileTheModeOfItsUse) {
    const Sandbox sandbox;
    ProcessLock shared;
    ProcessLock own;
    const mode_t before = ::umask(0002);
    EXPECT_EQ(shared.tryAcquire(sandbox.path("shared")), Lock::kHeld);
    EXPECT_EQ(own.acquire(sandbox.path("own")), Lock::kHeld);
    ::umask(before);
    EXPECT_EQ(modeOf(sandbox.path("shared")), fs::perms(0664));
    EXPECT_EQ(modeOf(sandbox.path("own")), fs::perms(0600));
}

TEST(ProcessLock, NeverFollowsALink) {
    const Sandbox sandbox;
    sandbox.write("target", "kept");
    for (const char* target : {"target", "missing"}) {
        SCOPED_TRACE(target);
        const QString path = sandbox.path("lock");
        ASSERT_TRUE(QFile::link(sandbox.path(target), path));
        ProcessLock lock;
        EXPECT_EQ(lock.tryAcquire(path), Lock::kRefused);
        EXPECT_EQ(lock.reason(), QString("it is a symbolic link"));
        lock.release();
        EXPECT_EQ(lock.acquire(path), Lock::kRefused);
        EXPECT_TRUE(QFile::remove(path));
        EXPECT_EQ(sandbox.tree("."), QStringList("target=kept"));
    }
}

}  // namespace quorvelle::testing
