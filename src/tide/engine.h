#pragma once

namespace tide {

/// Initialises libsodium, then libcurl's global state. Every program that uses the
/// engine calls it once, from the main thread, before any other function of it; further
/// calls do nothing. Where libsodium cannot work there is no safe way on: the process
/// says so on standard error and aborts.
void startEngine();

}  // namespace tide
