#include "launch/signal_relay.h"

#include <windows.h>

namespace quorvelle {

namespace {

/// Unlike a console's mode without Ctrl-C, this is nothing that the program inherits.
BOOL WINAPI leaveToTheProgram(DWORD event) {
    return event == CTRL_C_EVENT || event == CTRL_BREAK_EVENT ? TRUE : FALSE;
}

}  // namespace

SignalRelay::SignalRelay() {
    SetConsoleCtrlHandler(leaveToTheProgram, TRUE);
}

SignalRelay::~SignalRelay() {
    SetConsoleCtrlHandler(leaveToTheProgram, FALSE);
}

void SignalRelay::handOnTo(qint64) {}

}  // namespace quorvelle
