#pragma once

#include <QtGlobal>

namespace quorvelle {

/// While it exists, this process leaves Ctrl-C to a program that it waits for, which the
/// terminal tells of it as well, and hands on to it what asks a process to end: SIGTERM and
/// SIGHUP. On Windows the system tells the program of everything itself. A signal that this
/// process was started to ignore stays ignored, in the program too. Main thread only, one
/// object at a time.
class SignalRelay {
public:
    SignalRelay();
    ~SignalRelay();
    SignalRelay(const SignalRelay&) = delete;
    SignalRelay& operator=(const SignalRelay&) = delete;

    /// Names the program once it runs; signals that came before are handed on now.
    void handOnTo(qint64 processId);
};

}  // namespace quorvelle
