#include "core_rcsname.h"

#include "check_recorder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>

namespace {

// In two pieces, or tools that expand keywords would alter this file.
const std::string kStart = std::string("$") + "Name: ";

TEST(RcsName, ConstantsOfThisBuild) {
    EXPECT_EQ(core::rcsName(), kStart + "tag_orvistrand_2_1_rc_1 $");
    EXPECT_EQ(core::buildStamp(), "220329-103018");
    EXPECT_EQ(core::buildModuleName(), "orvistrand");
    EXPECT_EQ(core::platformName(), "win_i686");
    EXPECT_EQ(core::version(), "tag_orvistrand_2_1_rc_1");
    EXPECT_EQ(core::dumpVersionTag(), "tag_orvistrand_2_1_rc_1_220329-103018");
}

TEST(RcsName, VersionFromKeyword) {
    const std::pair<const char*, std::string> cases[] = {
        {"tag_orvistrand_2_1_rc_1 $", "tag_orvistrand_2_1_rc_1"},
        {"release_2_1 $", "2_1"},
        {"release_ $", ""},
        {"release $", "release"},
        {" $", ""},
    };
    test::CheckRecorder checks;
    for (const auto& [rest, version] : cases)
        EXPECT_EQ(core::versionFromRcsName(kStart + rest), version);
    EXPECT_THAT(checks.take(), testing::IsEmpty());
}

TEST(RcsName, OtherTextIsReportedAndReturnedWhole) {
    const test::FailedCheck reported{"CHECKF", "core_rcsname.cpp", 28, 0, ""};
    test::CheckRecorder checks;
    for (const std::string& text : {std::string(), kStart + "$", kStart + "tag", kStart + "tag$",
                                    " " + kStart + "tag $", kStart + "release_2_1 $ "}) {
        EXPECT_EQ(core::versionFromRcsName(text), text);
        EXPECT_THAT(checks.take(), testing::ElementsAre(reported)) << text;
    }
}

} // namespace
