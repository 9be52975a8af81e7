#include "core_timespec.h"

#include <chrono>
#include <cstdlib>
#include <ctime>
#include <gtest/gtest.h>
#include <tuple>

namespace {

using core::CivilTime;

constexpr int64_t kSecond = 1'000'000'000;

auto fields(const CivilTime& t) {
    return std::tuple(t.year, t.month, t.day, t.hour, t.minute, t.second);
}

TEST(TimeSpec, NowIsTheSystemsClock) {
    const std::chrono::nanoseconds now = std::chrono::system_clock::now().time_since_epoch();
    EXPECT_LT(std::abs(core::now() - now.count()), 3600 * kSecond) << "a wrong epoch or unit";
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

} // namespace
