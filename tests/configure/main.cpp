#include "qt_platform.h"

#include <gtest/gtest.h>

// Without an application object: the tool under test creates its own.
int main(int argc, char** argv) {
    test::preferOffscreen();
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
