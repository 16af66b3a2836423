#include <cstdint>

#include "fuzz/targets.h"
#include "tide/engine.h"

/// What a fuzzer's main() calls. The build says which target this one is for.

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    tide::startEngine();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    tide::fuzz::QUORVELLE_FUZZ_TARGET({reinterpret_cast<const char*>(bytes), size});
    return 0;
}
