#include "core_fixedpoint.h"

#include "check_recorder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>

namespace {

constexpr int64_t kLowest = std::numeric_limits<int64_t>::min();
constexpr int64_t kHighest = std::numeric_limits<int64_t>::max();

TEST(FixedPoint, Text) {
    const struct {
        int64_t value;
        uint32_t digits;
        std::string text;
    } cases[] = {
        {-5, 0, "-5"},
        {kLowest, 0, "-9223372036854775808"},
        {0, 2, "0.00"},
        {12345, 2, "123.45"},
        {-50, 3, "-0.050"},
        {kLowest, 19, "-0.9223372036854775808"},
        // From here on the power of ten has lost its upper digits.
        {kHighest, 20, "1.01457092405402533887"},
        {kLowest, 63, "-1." + std::string(63, '0')},
        {7, 64, "0." + std::string(63, '0') + "7"},
        {kLowest, 64, "-0." + std::string(45, '0') + "9223372036854775808"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(core::fixedPointText(c.value, c.digits), c.text) << c.value << ", " << c.digits;
}

TEST(FixedPoint, TooManyDigitsAreRefused) {
    test::CheckRecorder checks;
    EXPECT_EQ(core::fixedPointText(12345, 65), "0.0");
    EXPECT_THAT(checks.take(), testing::ElementsAre(
                                   test::FailedCheck{"CHECKF", "core_fixedpoint.cpp", 28, 0, ""}));
    const test::ScopedAssertionLevel off(-1);
    EXPECT_EQ(core::fixedPointText(12345, 70), "0.0");
    EXPECT_THAT(checks.take(), testing::IsEmpty());
}

} // namespace
