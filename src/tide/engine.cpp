#include "tide/engine.h"

#include <curl/curl.h>
#include <sodium.h>

#include <cstdio>
#include <cstdlib>

namespace tide {

void startEngine(const Network& settings) {
    static const bool started = [&settings] {
        if (sodium_init() < 0) {
            std::fputs("tide-core: libsodium failed to initialise\n", stderr);
            std::fflush(stderr);
            std::abort();
        }
        curl_global_init(CURL_GLOBAL_DEFAULT);
        useNetwork(settings);
        return true;
    }();
    static_cast<void>(started);
}

}  // namespace tide
