#include "core_assert.h"
#include "qt_platform.h"

#include <QApplication>

#include <gtest/gtest.h>

int main(int argc, char** argv) {
    test::preferOffscreen();
    // Only those checks may fail that a test records.
    core::Assert::setFailureHandler([](const char* condition, const char* file, int32_t line,
                                       int32_t, const std::string& message) {
        ADD_FAILURE() << condition << " at " << file << ':' << line << ": " << message;
        return false;
    });
    testing::InitGoogleTest(&argc, argv);
    const QApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
