#include "core_timespec.h"

#include <chrono>
#include <cstdlib>
#include <ctime>
#include <gtest/gtest.h>
#include <limits>
#include <tuple>

namespace {

using core::CivilTime;

constexpr int64_t kSecond = 1'000'000'000;
constexpr int64_t kDay = 86400; // seconds
constexpr int64_t kLowest = std::numeric_limits<int64_t>::min();
constexpr int64_t kHighest = std::numeric_limits<int64_t>::max();

auto fields(const CivilTime& t) {
    return std::tuple(t.year, t.month, t.day, t.hour, t.minute, t.second);
}

TEST(TimeSpec, NowIsTheSystemsClock) {
    const auto elapsed = std::chrono::system_clock::now().time_since_epoch();
    const int64_t expected = std::chrono::duration_cast<std::chrono::nanoseconds>(elapsed).count();
    EXPECT_LT(std::abs(core::now() - expected), 3600 * kSecond) << "a wrong epoch or unit";
}

// clang-format off
TEST(TimeSpec, CivilTimeInUtcAndBack) {
    const std::pair<int64_t, CivilTime> cases[] = {
        {0, {1970, 1, 1, 0, 0, 0}},
        {kSecond - 1, {1970, 1, 1, 0, 0, 0}},
        {-1, {1969, 12, 31, 23, 59, 59}},
        {951868799 * kSecond, {2000, 2, 29, 23, 59, 59}},
        {2147483648 * kSecond, {2038, 1, 19, 3, 14, 8}},
        {kLowest, {1677, 9, 21, 0, 12, 43}},
        {kHighest, {2262, 4, 11, 23, 47, 16}},
    };
    for (const auto& [time, civil] : cases) {
        EXPECT_EQ(fields(core::utcCivilTime(time)), fields(civil)) << time;
        EXPECT_EQ(core::secondsOfCivilTime(civil), time / kSecond - (time % kSecond < 0 ? 1 : 0));
    }
}

TEST(TimeSpec, FieldsBeyondTheirRangesCountOn) {
    const std::pair<CivilTime, int64_t> cases[] = {
        {{1970, 1, 32, 0, 0, 0}, 31 * kDay},
        {{1970, 0, 0, 0, 0, 0}, -32 * kDay},
        {{1969, 14, 1, 0, -1, 61}, 31 * kDay + 1},
        {{65535, 1, 1, 0, 0, 0}, 2005917609600},
    };
    for (const auto& [civil, seconds] : cases)
        EXPECT_EQ(core::secondsOfCivilTime(civil), seconds);
    constexpr int32_t kMax = std::numeric_limits<int32_t>::max();
    EXPECT_GT(core::secondsOfCivilTime({kMax, kMax, kMax, kMax, kMax, kMax}), int64_t{kMax} * 31'000'000);
}
// clang-format on

TEST(TimeSpec, LocalTimeIsTheRuntimes) {
    for (const time_t time : {0, 951868799, 1648549818, 1656412218}) {
        const tm* const local = std::localtime(&time); // NOLINT(concurrency-mt-unsafe)
        EXPECT_EQ(fields(core::localCivilTime(time * kSecond)),
                  std::tuple(local->tm_year + 1900, local->tm_mon + 1, local->tm_mday,
                             local->tm_hour, local->tm_min, local->tm_sec));
    }
}

TEST(TimeSpec, EveryTimeHasALocalTime) {
    for (const int64_t time : {kLowest, int64_t{-1}, kHighest}) {
        const int64_t offset = core::secondsOfCivilTime(core::localCivilTime(time)) -
                               core::secondsOfCivilTime(core::utcCivilTime(time));
        EXPECT_LE(std::abs(offset), 16 * 3600) << time;
    }
}

} // namespace
