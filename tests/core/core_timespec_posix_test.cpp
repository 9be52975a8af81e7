#include "core_timespec.h"

#include "child_process.h"

#include <gmock/gmock.h>

namespace {

// The runtime's time zone belongs to the process, so another one takes another process.
CHILD_CASE(showsOffsets) {
    setenv("TZ", argument.c_str(), 1);
    for (const int32_t month : {1, 7}) {
        const int64_t noon = core::secondsOfCivilTime({2022, month, 15, 12, 0, 0});
        const core::CivilTime local = core::localCivilTime(noon * 1'000'000'000);
        std::printf("%+d:", static_cast<int>(core::secondsOfCivilTime(local) - noon));
    }
}

TEST(TimeSpecZones, LocalTimeFollowsZoneAndSeason) {
    using testing::EndsWith;
    EXPECT_THAT(test::runChild("showsOffsets", "<+0545>-5:45").out, EndsWith("+20700:+20700:"));
    EXPECT_THAT(test::runChild("showsOffsets", "EST5EDT,M3.2.0,M11.1.0").out,
                EndsWith("-18000:-14400:"));
}

} // namespace
