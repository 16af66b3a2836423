#include <fcntl.h>
#include <unistd.h>
#include <QSocketNotifier>
#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>

#include "onboarding/interrupts.h"

namespace quorvelle::onboarding {

namespace {

constexpr std::array kSignals = {SIGINT, SIGTERM, SIGHUP};

std::atomic<int> noted{0};
std::atomic<int> wakeUp{-1};
static_assert(std::atomic<int>::is_always_lock_free, "used in a signal handler");

void note(int) {
    const int before = errno;
    noted.fetch_add(1);
    const char byte = 0;
    // A full pipe wakes the event loop as well.
    [[maybe_unused]] const ssize_t written = ::write(wakeUp.load(), &byte, 1);
    errno = before;
}

/// A hang-up that the process was started to survive stays ignored.
bool isToStayIgnored(int signal, const struct sigaction& before) {
    return signal == SIGHUP && before.sa_handler == SIG_IGN;
}

}  // namespace

struct Interrupts::Holding {
    Holding() {
        noted = 0;
        if (::pipe2(pipe.data(), O_CLOEXEC | O_NONBLOCK) == 0) {
            wakeUp = pipe[1];
            notifier = std::make_unique<QSocketNotifier>(pipe[0], QSocketNotifier::Read);
        }
        struct sigaction action = {};
        action.sa_flags = SA_RESTART;
        action.sa_handler = note;
        for (std::size_t i = 0; i < kSignals.size(); ++i) {
            ::sigaction(kSignals[i], nullptr, &before[i]);
            if (!isToStayIgnored(kSignals[i], before[i])) {
                ::sigaction(kSignals[i], &action, nullptr);
            }
        }
    }

    ~Holding() {
        for (std::size_t i = 0; i < kSignals.size(); ++i) {
            ::sigaction(kSignals[i], &before[i], nullptr);
        }
        wakeUp = -1;
        notifier.reset();
        for (const int end : pipe) {
            ::close(end);
        }
    }

    Holding(const Holding&) = delete;
    Holding& operator=(const Holding&) = delete;

    void drain() const {
        std::array<char, 64> bytes{};
        while (::read(pipe[0], bytes.data(), bytes.size()) > 0) {
        }
    }

    std::array<int, 2> pipe{-1, -1};
    std::unique_ptr<QSocketNotifier> notifier;
    std::array<struct sigaction, kSignals.size()> before{};
};

Interrupts::Interrupts() = default;
Interrupts::~Interrupts() = default;

void Interrupts::hold() {
    holding = std::make_unique<Holding>();
    if (holding->notifier) {
        connect(holding->notifier.get(), &QSocketNotifier::activated, this, [this] {
            holding->drain();
            Q_EMIT arrived();
        });
    }
}

int Interrupts::count() const {
    return holding ? noted.load() : 0;
}

}  // namespace quorvelle::onboarding
