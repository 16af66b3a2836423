#include "tide/store/network.h"

namespace tide {

namespace {

Network& current() {
    static Network settings;
    return settings;
}

}  // namespace

void useNetwork(const Network& settings) {
    current() = settings;
}

const Network& network() {
    return current();
}

}  // namespace tide
