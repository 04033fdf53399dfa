#include <QCoreApplication>
#include <gmock/gmock.h>

/// For test programs whose cases need an event loop.
int main(int argumentCount, char** arguments) {
    testing::InitGoogleMock(&argumentCount, arguments);
    const QCoreApplication application(argumentCount, arguments);
    return RUN_ALL_TESTS();
}
