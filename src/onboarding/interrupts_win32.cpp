#include <windows.h>

#include <QMetaObject>
#include <atomic>
#include <condition_variable>
#include <mutex>

#include "onboarding/interrupts.h"

namespace quorvelle::onboarding {

namespace {

/// Between the main thread and the threads on which the system calls the handler.
std::mutex mutex;
std::condition_variable released;
Interrupts* holder = nullptr;
std::atomic<int> noted{0};

BOOL WINAPI note(DWORD event) {
    std::unique_lock lock(mutex);
    if (holder == nullptr) {
        return FALSE;
    }
    noted.fetch_add(1);
    QMetaObject::invokeMethod(holder, &Interrupts::arrived, Qt::QueuedConnection);
    if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT) {
        // The process ends when this returns.
        released.wait(lock, [] { return holder == nullptr; });
    }
    return TRUE;
}

}  // namespace

struct Interrupts::Holding {
    explicit Holding(Interrupts* owner) {
        noted = 0;
        const std::lock_guard guard(mutex);
        holder = owner;
        SetConsoleCtrlHandler(note, TRUE);
    }

    ~Holding() {
        {
            const std::lock_guard guard(mutex);
            holder = nullptr;
        }
        // First, for the system holds a lock of its own while the handler waits.
        released.notify_all();
        SetConsoleCtrlHandler(note, FALSE);
    }

    Holding(const Holding&) = delete;
    Holding& operator=(const Holding&) = delete;
};

Interrupts::Interrupts() = default;
Interrupts::~Interrupts() = default;

void Interrupts::hold() {
    holding = std::make_unique<Holding>(this);
}

int Interrupts::count() const {
    return holding ? noted.load() : 0;
}

}  // namespace quorvelle::onboarding
