#include "core_rcsname.h"

#include "check_recorder.h"

#include <filesystem>
#include <gmock/gmock.h>

namespace {

// In two pieces, or tools that expand keywords would alter this file.
const std::string kStart = std::string("$") + "Name: ";

TEST(RcsName, VersionFromKeyword) {
    test::CheckRecorder checks;
    EXPECT_EQ(core::versionFromRcsName(kStart + "tag_a_2_1 $"), "tag_a_2_1");
    EXPECT_EQ(core::versionFromRcsName(kStart + "release_2_1 $"), "2_1");
    EXPECT_EQ(core::versionFromRcsName(kStart + "release_ $"), "");
    EXPECT_EQ(core::versionFromRcsName(core::rcsName()), core::version());
    EXPECT_THAT(checks.take(), testing::IsEmpty());
}

TEST(RcsName, PlatformIsThatOfTheBuild) {
    const bool windows = std::filesystem::path::preferred_separator == '\\';
    EXPECT_THAT(std::string(core::platformName()),
                testing::MatchesRegex(windows ? "win_i686" : "linux_.+"));
}

TEST(RcsName, OtherTextIsReportedAndReturnedWhole) {
    const test::FailedCheck reported{"CHECKF", "core_rcsname.cpp", 28, 0, ""};
    test::CheckRecorder checks;
    for (const std::string& text :
         {kStart + "$", kStart + "tag$", " " + kStart + "tag $", kStart + "release_2_1 $ "}) {
        EXPECT_EQ(core::versionFromRcsName(text), text);
        EXPECT_THAT(checks.take(), testing::ElementsAre(reported)) << text;
    }
}

} // namespace
