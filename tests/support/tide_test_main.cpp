#include <gmock/gmock.h>

#include <cstdlib>

#include "tide/engine.h"

int main(int argc, char* argv[]) {
    ::testing::InitGoogleMock(&argc, argv);
    // The servers of the tests are on this machine.
    setenv("no_proxy", "*", 1);
    tide::startEngine();
    return RUN_ALL_TESTS();
}
