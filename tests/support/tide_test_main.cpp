#include <gmock/gmock.h>

#include <QCoreApplication>

#include "tide/engine.h"

int main(int argc, char* argv[]) {
    ::testing::InitGoogleMock(&argc, argv);
    const QCoreApplication application(argc, argv);  // for the processes of the tests
    // The servers of the tests are on this machine.
    qputenv("no_proxy", "*");
    tide::startEngine();
    return RUN_ALL_TESTS();
}
