#pragma once

#include <QStringList>
#include <chrono>
#include <functional>

namespace quorvelle {

namespace onboarding {

class Interrupts;

/// What a run takes from the world besides the network.
struct Surroundings {
    /// Milliseconds since some point in the past, never going back.
    std::function<qint64()> now;
    /// Waits for so many milliseconds, or until an interrupt.
    std::function<void(int milliseconds, const Interrupts& interrupts)> sleep;
    std::function<quint64()> random;
    /// For one call to Cloudflare.
    std::chrono::milliseconds callLimit = std::chrono::seconds(30);
    /// What an interrupt leaves to a call that changes something.
    std::chrono::milliseconds grace = std::chrono::seconds(5);
};

/// `quorvelle storage init` in given surroundings; returns the exit code.
int storageInit(QStringList args, const Surroundings& surroundings);

}  // namespace onboarding

/// `quorvelle storage init`: makes a Cloudflare R2 bucket and connects a server to it.
int storageInitCommand(QStringList args);

}  // namespace quorvelle
