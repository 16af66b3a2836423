#include <gmock/gmock.h>

#include <QByteArray>

#include "tide/engine.h"

int main(int argc, char* argv[]) {
    ::testing::InitGoogleMock(&argc, argv);
    // The servers of the tests are on this machine.
    qputenv("no_proxy", "*");
    tide::startEngine();
    return RUN_ALL_TESTS();
}
