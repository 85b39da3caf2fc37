#include <gtest/gtest.h>

#include <QCoreApplication>

// The network module has no widgets, so its tests need no GUI application.
int main(int argc, char* argv[]) {
    QCoreApplication app(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
