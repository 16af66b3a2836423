#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

namespace tide {

/// Calls `work` once for each number below `count`, lowest first, on up to `threads` threads,
/// the caller's among them; 0 means as many as the machine runs at once. Returns when all have
/// ended. `work` must not throw.
void workOnCores(std::size_t count, const std::function<void(std::size_t)>& work,
                 unsigned threads = 0);

/// Puts what takes long before the rest: begun last, it would keep one thread at work after all
/// others have ended. `bytesOf` tells what is to be read for an item. Small ones stay in their
/// order, in which they may lie on the disk.
template <typename Item, typename BytesOf>
void orderForCores(std::vector<Item>& items, const BytesOf& bytesOf) {
    constexpr std::uint64_t kSmall = std::uint64_t{4} << 20;
    std::stable_sort(items.begin(), items.end(), [&](const Item& left, const Item& right) {
        return std::max(bytesOf(left), kSmall) > std::max(bytesOf(right), kSmall);
    });
}

}  // namespace tide
