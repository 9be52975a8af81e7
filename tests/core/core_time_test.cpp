// Moments, dates and durations.

#include "core_time.h"
#include "core_timespec.h"
#include "testing_checkrecorder.h"

#include <chrono>
#include <cstdlib>
#include <ctime>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <tuple>

namespace {

using core::CivilTime;
using core::DateTime;
using core::TimeSpan;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr int64_t kSecond = 1'000'000'000;

auto fields(const CivilTime& t) {
    return std::tuple(t.year, t.month, t.day, t.hour, t.minute, t.second);
}

TEST(TimeSpec, CivilTimeInUtcAndBack) {
    const std::pair<int64_t, CivilTime> cases[] = {
        {-1, {1969, 12, 31, 23, 59, 59}},
        {951868799 * kSecond, {2000, 2, 29, 23, 59, 59}},
        {INT64_MIN, {1677, 9, 21, 0, 12, 43}},
        {INT64_MAX, {2262, 4, 11, 23, 47, 16}},
    };
    for (const auto& [time, civil] : cases) {
        EXPECT_EQ(fields(core::utcCivilTime(time)), fields(civil)) << time;
        EXPECT_EQ(core::secondsOfCivilTime(civil), time / kSecond - (time % kSecond < 0 ? 1 : 0));
    }
    // Fields beyond their ranges count on.
    EXPECT_EQ(core::secondsOfCivilTime({1970, 0, 0, 0, 0, 0}), -32 * 86400);
    EXPECT_EQ(core::secondsOfCivilTime({1969, 14, 1, 0, -1, 61}), 31 * 86400 + 1);
    constexpr int32_t kMax = INT32_MAX;
    EXPECT_GT(core::secondsOfCivilTime({kMax, kMax, kMax, kMax, kMax, kMax}), int64_t{kMax} << 24);
}

TEST(TimeSpec, LocalTimeIsTheRuntimes) {
    const std::chrono::nanoseconds now = std::chrono::system_clock::now().time_since_epoch();
    EXPECT_LT(std::abs(core::now() - now.count()), 3600 * kSecond) << "a wrong epoch or unit";
    for (const time_t time : {951868799, 1656412218}) {
        const tm* const local = std::localtime(&time); // NOLINT(concurrency-mt-unsafe)
        EXPECT_EQ(fields(core::localCivilTime(time * kSecond)),
                  std::tuple(local->tm_year + 1900, local->tm_mon + 1, local->tm_mday,
                             local->tm_hour, local->tm_min, local->tm_sec));
    }
    for (const int64_t time : {INT64_MIN, int64_t{-1}, INT64_MAX}) {
        const int64_t offset = core::secondsOfCivilTime(core::localCivilTime(time)) -
                               core::secondsOfCivilTime(core::utcCivilTime(time));
        EXPECT_LE(std::abs(offset), 16 * 3600) << time;
    }
}

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

TEST(DateTime, OffsetsReachHalfADayEitherWay) {
    test::CheckRecorder checks;
    for (const int32_t dto : {-24, -1, 0, 24, DateTime::UnknownDto}) {
        EXPECT_EQ(at({}, dto).dto(), dto);
        EXPECT_EQ(at({}, dto).isDtoSet(), dto != DateTime::UnknownDto);
    }
    EXPECT_THAT(checks.take(), IsEmpty());
    const test::FailedCheck refused{"i_dto == UnknownDto", "core_time.cpp", 1026, 1, ""};
    for (const int32_t dto : {-25, 26, INT32_MIN})
        EXPECT_EQ(at({}, dto).dto(), DateTime::UnknownDto);
    EXPECT_THAT(checks.take(), ElementsAre(refused, refused, refused));
}

TEST(DateTime, SecondsNeedTheOffset) {
    EXPECT_EQ(at({2022, 3, 29, 10, 30, 18}, 3).toSeconds(), 1648549818 - 3 * 1800);
    EXPECT_EQ(at({1969, 12, 31, 12, 0, 0}, -24).toSeconds(), 0);

    const test::FailedCheck refused{"isDtoSet()", "core_time.cpp", 1610, 1, ""};
    test::CheckRecorder checks;
    EXPECT_EQ(DateTime(2024, 1, 1).toSeconds(), 0);
    EXPECT_EQ(DateTime::fromPacked(uint64_t{0x20} << 42).toSeconds(), 0) << "offset -32";
    EXPECT_THAT(checks.take(), ElementsAre(refused, refused));
}

TEST(DateTime, DifferenceBorrowsFromTheSeconds) {
    const CivilTime noon{2024, 1, 1, 12, 0, 0};
    const CivilTime later{2024, 1, 1, 12, 0, 2};
    EXPECT_EQ(core::difference(at(later, 0, 0x8000), at(noon, 0)), (TimeSpan{2, 500'000'000}));
    EXPECT_EQ(core::difference(at(noon, 0), at(noon, 0, 1)), (TimeSpan{-1, 999'984'741}));
    EXPECT_EQ(core::difference(at(noon, -4), at(noon, 4)), (TimeSpan{14400, 0}));
}

std::string texts(std::string (*text)(int64_t), std::initializer_list<int64_t> durations) {
    std::string all;
    for (const int64_t duration : durations)
        all += text(duration) + ", ";
    return all;
}

TEST(DurationText, NamesHoursMinutesAndSeconds) {
    EXPECT_EQ(texts(core::secondsText, {0, 59, 60, 3599, 3600, -1, -3661, INT64_MIN}),
              "0s, 59s, 1m 00s, 59m 59s, 1h 0m 00s, -1s, -1h 1m 01s, -2562047788015215h 30m 08s, ");
    EXPECT_EQ(texts(core::millisecondsText,
                    {0, 999, 1000, 59999, 60500, 3600001, -250, -1000, -3661005, INT64_MIN}),
              "0s, 999ms, 1s, 59.999s, 1m 00.500s, 1h 0m 00.001s, -250ms, -1s, -1h 1m 01.005s, "
              "-2562047788015h 12m 55.808s, ");
}

} // namespace
