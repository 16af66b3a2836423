#include <gmock/gmock.h>

#include <QCoreApplication>

int main(int argc, char* argv[]) {
    ::testing::InitGoogleMock(&argc, argv);
    const QCoreApplication application(argc, argv);
    QCoreApplication::setOrganizationName(QStringLiteral("Quorvelle"));
    QCoreApplication::setApplicationName(QStringLiteral("Quorvelle"));
    QCoreApplication::setApplicationVersion(QStringLiteral("1.2.3+gtest"));
    return RUN_ALL_TESTS();
}
