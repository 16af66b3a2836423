#pragma once

#include <QString>
#include <memory>

namespace quorvelle {

/// A lock between processes, named by a path. It ends with this object or with
/// the process, however that ends; a file that a killed holder left behind locks
/// nothing. Released, it leaves no file behind, unless that is another user's to remove.
class ProcessLock {
public:
    enum class Outcome {
        kHeld,     ///< this process holds the lock
        kBusy,     ///< another holder has it (tryAcquire only)
        kNoPlace,  ///< nothing stands at the path, nor can a file be made there
        kRefused,  ///< what stands at the path cannot be locked, see reason()
    };

    ProcessLock();
    ~ProcessLock();
    ProcessLock(const ProcessLock&) = delete;
    ProcessLock& operator=(const ProcessLock&) = delete;

    /// Takes the lock, waiting for its holder. The path's folder must exist. The file is
    /// the user's alone, so that nobody else can keep them waiting.
    Outcome acquire(const QString& path) { return take(path, true); }

    /// Takes the lock if nobody has it; two objects of one process count as two. All users
    /// who may read the file take part.
    Outcome tryAcquire(const QString& path) { return take(path, false); }

    /// Gives the lock up; without one, does nothing.
    void release();

    /// Why the lock was refused, in the system's words.
    QString reason() const { return refusal; }

private:
    struct Holding;
    Outcome take(const QString& path, bool wait);
    std::unique_ptr<Holding> holding;
    QString refusal;
};

}  // namespace quorvelle
