#include "tide/engine.h"

#include <curl/curl.h>
#include <sodium.h>

#include <cstdio>
#include <cstdlib>

namespace tide {

void requireSodium(int initResult) {
    if (initResult < 0) {
        std::fputs("tide-core: libsodium failed to initialise\n", stderr);
        std::abort();
    }
}

void startEngine() {
    static const bool started = [] {
        requireSodium(sodium_init());
        curl_global_init(CURL_GLOBAL_DEFAULT);
        return true;
    }();
    static_cast<void>(started);
}

}  // namespace tide
