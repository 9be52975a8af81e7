#include "core_log.h"
#include "testing_matchers.h"

#include <string>

constexpr core::CheckSite kNoCamera{"viewer.cpp", 12};

TEST(Viewer, SaysThatThereIsNoCamera) {
    const auto start = [] {
        if (!CHECKF_AT(kNoCamera, false, std::string("there are 0")))
            core::logf(core::kChannelWarn, "started without cameras");
    };
    EXPECT_THAT(start, test::FailsCheck(kNoCamera, "there are 0"));
    EXPECT_THAT(start, test::Logs("WARN started without cameras"));
}
