#include "qt_platform.h"

#include <QApplication>

#include <gtest/gtest.h>

int main(int argc, char** argv) {
    test::preferOffscreen();
    testing::InitGoogleTest(&argc, argv);
    const QApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
