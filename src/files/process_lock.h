#pragma once

#include <QString>
#include <memory>

namespace quorvelle {

/// A lock between processes, named by a path. It ends with this object or with
/// the process, however that ends; a file that a killed holder left behind locks
/// nothing. Released, it leaves no file behind.
class ProcessLock {
public:
    enum class Outcome {
        kHeld,         ///< this process holds the lock
        kBusy,         ///< another holder has it (tryAcquire only)
        kUnavailable,  ///< no lock can be made at that path (folder missing, refused)
    };

    ProcessLock();
    ~ProcessLock();
    ProcessLock(const ProcessLock&) = delete;
    ProcessLock& operator=(const ProcessLock&) = delete;

    /// Takes the lock, waiting for its holder. The path's folder must exist.
    Outcome acquire(const QString& path) { return take(path, true); }

    /// Takes the lock if nobody has it; two objects of one process count as two.
    Outcome tryAcquire(const QString& path) { return take(path, false); }

    /// Gives the lock up; without one, does nothing.
    void release();

private:
    struct Holding;
    Outcome take(const QString& path, bool wait);
    std::unique_ptr<Holding> holding;
};

}  // namespace quorvelle
