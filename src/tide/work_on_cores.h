#pragma once

#include <cstddef>
#include <functional>

namespace tide {

/// Calls `work` once for each number below `count`, lowest first, on up to `threads` threads,
/// the caller's among them; 0 means as many as the machine runs at once. Returns when all have
/// ended. `work` must not throw.
void workOnCores(std::size_t count, const std::function<void(std::size_t)>& work,
                 unsigned threads = 0);

}  // namespace tide
