#include "console/out_of_memory.h"

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <exception>
#include <memory>
#include <new>
#include <thread>

#include "console/exit_code.h"
#include "console/output.h"

namespace quorvelle {

namespace {

constexpr std::size_t kReserveBytes = 256 * 1024;

/// For the words at the end.
std::unique_ptr<char[]> reserve;
std::terminate_handler usualEnd = nullptr;

[[noreturn]] void end() {
    static std::atomic_flag isEnding;
    if (isEnding.test_and_set()) {
        // Another thread is at it, or the words need more than there is.
        std::this_thread::sleep_for(std::chrono::seconds(1));
        std::_Exit(kExitFailed);
    }
    reserve.reset();
    printError(QStringLiteral("out of memory"));
    std::_Exit(kExitFailed);
}

/// What the allocation functions of other libraries report as an exception that nobody can
/// handle ends here.
[[noreturn]] void endByException() {
    try {
        if (const auto exception = std::current_exception()) {
            std::rethrow_exception(exception);
        }
    } catch (const std::bad_alloc&) {
        end();
    } catch (...) {
    }
    usualEnd();
    std::abort();
}

}  // namespace

void endWhenOutOfMemory() {
    reserve = std::make_unique<char[]>(kReserveBytes);
    std::set_new_handler(end);
    usualEnd = std::set_terminate(endByException);
}

}  // namespace quorvelle
