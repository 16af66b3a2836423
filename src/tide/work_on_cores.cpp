#include "tide/work_on_cores.h"

#include <algorithm>
#include <atomic>
#include <system_error>
#include <thread>
#include <vector>

namespace tide {

void workOnCores(std::size_t count, const std::function<void(std::size_t)>& work,
                 unsigned threads) {
    std::atomic<std::size_t> next = 0;
    const auto workOn = [&] {
        for (std::size_t at = next++; at < count; at = next++) {
            work(at);
        }
    };
    const std::size_t wanted = threads > 0 ? threads : std::thread::hardware_concurrency();
    std::vector<std::jthread> helpers;
    while (helpers.size() + 1 < std::min(wanted, count)) {
        try {
            helpers.emplace_back(workOn);
        } catch (const std::system_error&) {
            break;  // No thread to be had: those there are do all the work.
        }
    }
    workOn();
}

}  // namespace tide
