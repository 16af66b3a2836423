#include "files/process_lock.h"

#include "support/process_runner.h"

namespace quorvelle::testing {

using Lock = ProcessLock::Outcome;

TEST(ProcessLock, IsHeldByOneObjectAtATime) {
    const Sandbox sandbox;
    const QString path = sandbox.path("lock");
    ProcessLock first;
    ProcessLock second;
    EXPECT_EQ(first.tryAcquire(path), Lock::kHeld);
    EXPECT_EQ(second.tryAcquire(path), Lock::kBusy);
    EXPECT_EQ(second.tryAcquire(sandbox.path("other")), Lock::kHeld);
    first.release();
    EXPECT_EQ(second.acquire(path), Lock::kHeld);
    EXPECT_EQ(first.tryAcquire(path), Lock::kBusy);
}

TEST(ProcessLock, LeavesNoFileBehind) {
    const Sandbox sandbox;
    {
        ProcessLock lock;
        lock.release();
        EXPECT_EQ(lock.acquire(sandbox.path("lock")), Lock::kHeld);
        EXPECT_EQ(QDir(sandbox.path(".")).entryList(QDir::Files), QStringList("lock"));
        lock.release();
        lock.release();
        EXPECT_EQ(sandbox.tree("."), QStringList());
        EXPECT_EQ(lock.acquire(sandbox.path("lock")), Lock::kHeld);
    }
    EXPECT_EQ(sandbox.tree("."), QStringList());
}

TEST(ProcessLock, IsNotHeldByAFileLeftBehind) {
    const Sandbox sandbox;
    sandbox.write("lock", "4711");
    ProcessLock lock;
    EXPECT_EQ(lock.tryAcquire(sandbox.path("lock")), Lock::kHeld);
    lock.release();
    EXPECT_EQ(sandbox.tree("."), QStringList());
}

TEST(ProcessLock, TellsNoPlaceForAFileFromARefusal) {
    const Sandbox sandbox;
    sandbox.write("folder/file", "");
    ProcessLock lock;
    EXPECT_EQ(lock.tryAcquire(sandbox.path("missing/lock")), Lock::kNoPlace);
    EXPECT_EQ(lock.acquire(sandbox.path("folder/file/lock")), Lock::kNoPlace);
    EXPECT_EQ(lock.reason(), QString());
    EXPECT_EQ(lock.acquire(sandbox.path("folder")), Lock::kRefused);
    EXPECT_NE(lock.reason(), QString());
    EXPECT_EQ(sandbox.tree("."), QStringList("folder/file="));
}

}  // namespace quorvelle::testing
