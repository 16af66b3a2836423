#pragma once

#include <QObject>
#include <memory>

namespace quorvelle::onboarding {

/// Turns Ctrl-C, and the other ways in which a person or the system asks the process to
/// end, into something to react to: a run that has created things elsewhere must not end
/// before it has deleted them. Main thread only, one object at a time.
///
/// On POSIX these are SIGINT, SIGTERM and SIGHUP. On Windows they are the console's events;
/// where the system ends the process after the event it is kept waiting, for as long as the
/// system allows.
class Interrupts : public QObject {
    Q_OBJECT

public:
    Interrupts();
    /// Gives the process back its way of ending.
    ~Interrupts() override;

    /// From here on interrupts are noted and do nothing else. Until then they end the
    /// process as ever.
    void hold();

    /// How many were noted; right at once, also between two runs of the event loop.
    int count() const;

Q_SIGNALS:
    /// One or more were noted. Emitted from the event loop.
    void arrived();

private:
    struct Holding;
    std::unique_ptr<Holding> holding;
};

}  // namespace quorvelle::onboarding
