#include <QCoreApplication>
#include <gtest/gtest.h>

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    // As in the tool.
    qputenv("LC_ALL", "C.UTF-8");
    const QCoreApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
