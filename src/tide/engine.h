#pragma once

#include "tide/store/network.h"

namespace tide {

/// Initialises libsodium, then libcurl's global state. Every program that uses the
/// engine calls it once, from the main thread, before any other function of it; further
/// calls do nothing. `settings` are those of all transfers. Where libsodium cannot work there is no
/// safe way on: the process says so on standard error and aborts.
void startEngine(const Network& settings = {});

}  // namespace tide
