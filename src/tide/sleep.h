#pragma once

#include <chrono>
#include <functional>
#include <thread>

namespace tide {

/// Blocks for a time; an argument, so that tests need not wait.
using Sleep = std::function<void(std::chrono::nanoseconds)>;

inline void sleepFor(std::chrono::nanoseconds time) {
    std::this_thread::sleep_for(time);
}

}  // namespace tide
