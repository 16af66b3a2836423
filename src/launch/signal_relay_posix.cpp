#include "launch/signal_relay.h"

#include <sys/types.h>
#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>

namespace quorvelle {

namespace {

constexpr std::array kLeftToTheProgram = {SIGINT, SIGQUIT};
constexpr std::array kHandedOn = {SIGTERM, SIGHUP};

std::atomic<pid_t> receiver{0};
/// Of those that are handed on: the ones that came and were not yet.
std::atomic<unsigned> waiting{0};
static_assert(std::atomic<unsigned>::is_always_lock_free && std::atomic<pid_t>::is_always_lock_free,
              "used in a signal handler");

unsigned bitOf(int signal) {
    return 1U << static_cast<unsigned>(signal);
}

void deliver() {
    const pid_t to = receiver.load();
    if (to <= 0) {
        return;
    }
    const unsigned due = waiting.exchange(0);
    for (const int signal : kHandedOn) {
        if ((due & bitOf(signal)) != 0) {
            ::kill(to, signal);
        }
    }
}

/// Of handlers, unlike of SIG_IGN, the started program inherits nothing.
void doNothing(int) {}

void handOn(int signal) {
    const int before = errno;
    waiting.fetch_or(bitOf(signal));
    deliver();
    errno = before;
}

void setUnlessIgnored(int signal, void (*handler)(int)) {
    struct sigaction action = {};
    ::sigaction(signal, nullptr, &action);
    if (action.sa_handler != SIG_IGN) {
        action = {};
        action.sa_flags = SA_RESTART;
        action.sa_handler = handler;
        ::sigaction(signal, &action, nullptr);
    }
}

}  // namespace

SignalRelay::SignalRelay() {
    for (const int signal : kLeftToTheProgram) {
        setUnlessIgnored(signal, doNothing);
    }
    for (const int signal : kHandedOn) {
        setUnlessIgnored(signal, handOn);
    }
}

SignalRelay::~SignalRelay() {
    receiver = 0;
    waiting = 0;
    for (const auto& signals : {kLeftToTheProgram, kHandedOn}) {
        for (const int signal : signals) {
            setUnlessIgnored(signal, SIG_DFL);
        }
    }
}

void SignalRelay::handOnTo(qint64 processId) {
    receiver = static_cast<pid_t>(processId);
    deliver();
}

}  // namespace quorvelle
