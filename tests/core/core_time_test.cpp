#include "core_time.h"

#include "check_recorder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>

namespace {

using core::CivilTime;
using core::DateTime;
using core::TimeSpan;
using test::FailedCheck;
using testing::ElementsAre;
using testing::IsEmpty;

const FailedCheck kBadDto{"i_dto == UnknownDto", "core_time.cpp", 1026, 1, ""};
const FailedCheck kNoDto{"isDtoSet()", "core_time.cpp", 1610, 1, ""};
constexpr int64_t kLowest = std::numeric_limits<int64_t>::min();
constexpr int64_t kHighest = std::numeric_limits<int64_t>::max();

DateTime at(const CivilTime& civil, int32_t dto, uint16_t fraction = 0) {
    DateTime time(civil, fraction);
    time.setDto(dto);
    return time;
}

TEST(DateTime, PacksItsFieldsFromTheLowestBitOn) {
    const DateTime time = at({2022, 3, 29, 10, 30, 18}, 3, 0x8000);
    EXPECT_EQ(time.packed(), 0x80000D2795D307E6);
    EXPECT_EQ(DateTime(time.civil(), time.fraction()).packed(), 0x8000652795D307E6);
    EXPECT_EQ(DateTime(2022, 3, 29).packed(), 0x0000640001D307E6) << "midnight, dto unknown";
    EXPECT_EQ(DateTime({-1, -1, 32, 32, 64, 64}).packed(), 0x00006400000FFFFF) << "no spilling";
}

TEST(DateTime, SetDtoTakesHalfADayEitherWay) {
    test::CheckRecorder checks;
    DateTime time({2022, 3, 29, 10, 30, 18}, 0xFFFF);
    for (const int32_t dto : {-24, -1, 0, 24}) {
        time.setDto(dto);
        EXPECT_EQ(time.dto(), dto);
        EXPECT_TRUE(time.isDtoSet());
    }
    time.setDto(DateTime::UnknownDto);
    EXPECT_FALSE(time.isDtoSet());
    EXPECT_EQ(time.packed(), 0xFFFF652795D307E6);
    EXPECT_THAT(checks.take(), IsEmpty());
}

TEST(DateTime, SetDtoOutOfRangeIsUnknown) {
    test::CheckRecorder checks;
    for (const int32_t dto : {-25, 26, 30, 64, std::numeric_limits<int32_t>::min()}) {
        EXPECT_EQ(at({}, dto).dto(), DateTime::UnknownDto);
        EXPECT_THAT(checks.take(), ElementsAre(kBadDto)) << dto;
    }
    const test::ScopedAssertionLevel level(0);
    EXPECT_EQ(at({}, 30).dto(), DateTime::UnknownDto);
    EXPECT_THAT(checks.take(), IsEmpty());
}

TEST(DateTime, ToSecondsSubtractsTheOffset) {
    EXPECT_EQ(at({2022, 3, 29, 10, 30, 18}, 3).toSeconds(), 1648549818 - 3 * 1800);
    EXPECT_EQ(at({1969, 12, 31, 12, 0, 0}, -24).toSeconds(), 0);
    EXPECT_EQ(at({1970, 1, 1, 0, 0, 0}, 24).toSeconds(), -12 * 3600);
}

TEST(DateTime, ToSecondsWithoutOffsetIsZero) {
    test::CheckRecorder checks;
    EXPECT_EQ(DateTime(2024, 1, 1).toSeconds(), 0);
    const DateTime lowest = DateTime::fromPacked(uint64_t{0x20} << 42);
    EXPECT_EQ(lowest.dto(), -32);
    EXPECT_EQ(lowest.toSeconds(), 0);
    EXPECT_THAT(checks.take(), ElementsAre(kNoDto, kNoDto));
    const test::ScopedAssertionLevel level(0);
    EXPECT_EQ(DateTime(2024, 1, 1).toSeconds(), 0);
    EXPECT_THAT(checks.take(), IsEmpty());
}

TEST(DateTime, DifferenceBorrowsFromTheSeconds) {
    const CivilTime noon{2024, 1, 1, 12, 0, 0};
    const CivilTime later{2024, 1, 1, 12, 0, 2};
    EXPECT_EQ(core::difference(at(later, 0, 0x8000), at(noon, 0)), (TimeSpan{2, 500'000'000}));
    EXPECT_EQ(core::difference(at(later, 0), at(noon, 0, 0x4000)), (TimeSpan{1, 750'000'000}));
    EXPECT_EQ(core::difference(at(noon, 0), at(later, 0, 0x4000)), (TimeSpan{-3, 750'000'000}));
    EXPECT_EQ(core::difference(at(noon, 0), at(noon, 0, 1)), (TimeSpan{-1, 999'984'741}));
    EXPECT_EQ(core::difference(at(noon, -4), at(noon, 4)), (TimeSpan{14400, 0}));
}

// clang-format off
TEST(DurationText, OfSeconds) {
    const std::pair<int64_t, const char*> cases[] = {
        {0, "0s"}, {59, "59s"}, {60, "1m 00s"}, {61, "1m 01s"}, {3599, "59m 59s"},
        {3600, "1h 0m 00s"}, {3661, "1h 1m 01s"}, {-1, "-1s"}, {-61, "-1m 01s"},
        {-3661, "-1h 1m 01s"}, {kHighest, "2562047788015215h 30m 07s"},
        {kLowest, "-2562047788015215h 30m 08s"},
    };
    for (const auto& [seconds, text] : cases)
        EXPECT_EQ(core::secondsText(seconds), text);
}

TEST(DurationText, OfMilliseconds) {
    const std::pair<int64_t, const char*> cases[] = {
        {0, "0s"}, {999, "999ms"}, {1000, "1s"}, {1001, "1.001s"}, {59999, "59.999s"},
        {60000, "1m 00s"}, {61500, "1m 01.500s"}, {3600000, "1h 0m 00s"},
        {3661005, "1h 1m 01.005s"}, {-250, "-250ms"}, {-1000, "-1s"}, {-1500, "-1.500s"},
        {-61500, "-1m 01.500s"}, {-3661005, "-1h 1m 01.005s"},
        {kHighest, "2562047788015h 12m 55.807s"}, {kLowest, "-2562047788015h 12m 55.808s"},
    };
    for (const auto& [milliseconds, text] : cases)
        EXPECT_EQ(core::millisecondsText(milliseconds), text);
}
// clang-format on

} // namespace
