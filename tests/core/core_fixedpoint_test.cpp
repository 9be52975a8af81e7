#include "core_fixedpoint.h"

#include "check_recorder.h"

#include <gmock/gmock.h>

namespace {

using core::fixedPointText;

TEST(FixedPoint, Text) {
    EXPECT_EQ(fixedPointText(INT64_MIN, 0), "-9223372036854775808");
    EXPECT_EQ(fixedPointText(0, 2), "0.00");
    EXPECT_EQ(fixedPointText(-50, 3), "-0.050");
    EXPECT_EQ(fixedPointText(INT64_MIN, 19), "-0.9223372036854775808");
    // From here on the power of ten has lost its upper digits.
    EXPECT_EQ(fixedPointText(INT64_MAX, 20), "1.01457092405402533887");
    EXPECT_EQ(fixedPointText(INT64_MIN, 63), "-1." + std::string(63, '0'));
    EXPECT_EQ(fixedPointText(INT64_MIN, 64), "-0." + std::string(45, '0') + "9223372036854775808");

    test::CheckRecorder checks;
    EXPECT_EQ(fixedPointText(12345, 65), "0.0");
    const test::FailedCheck refused{"CHECKF", "core_fixedpoint.cpp", 28, 0, ""};
    EXPECT_THAT(checks.take(), testing::ElementsAre(refused));
}

} // namespace
