#include <gtest/gtest.h>

#include <QCoreApplication>

// For tests of what runs without a window: no widgets, no display.
int main(int argc, char* argv[]) {
    QCoreApplication app(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
