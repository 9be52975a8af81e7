#include "core_timespec.h"

#include "child_process.h"
#include "core_filelog.h"
#include "core_log.h"
#include "temp_folder.h"

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
    const test::TempFolder folder;
    core::MasterLogger::setImplementation(
        std::make_unique<core::FileLogImpl>(core::FileLogImpl::Options{.path = folder / "log"}));
    core::logText(core::kChannelWarn, "now");
    std::printf("%.5s", test::readFile(folder / "log").substr(24).c_str());
}

TEST(TimeSpecZones, LocalTimeFollowsZoneAndSeason) {
    using testing::EndsWith;
    const auto shown = [](const char* zone) { return test::runChild("showsOffsets", zone).out; };
    EXPECT_THAT(shown("<+0545>-5:45"), EndsWith("+20700:+20700:+0545"));
    EXPECT_THAT(shown("<-0030>0:30"), EndsWith("-1800:-1800:-0030"));
    EXPECT_THAT(shown("EST5EDT,M3.2.0,M11.1.0"), testing::HasSubstr("-18000:-14400:-0"));
    EXPECT_THAT(shown("UTC0"), EndsWith("+0:+0:+0000"));
}

} // namespace
