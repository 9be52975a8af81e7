#include "cutl_environment.h"

#include "testing_checkrecorder.h"

#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <optional>
#include <string>

namespace {

TEST(CommonDataFolder, IsAnExistingFolderOfTheSystem) {
    const std::optional<std::string> folder = cutl::systemCommonDataFolder();
    ASSERT_TRUE(folder.has_value());
    EXPECT_TRUE(std::filesystem::is_directory(*folder)) << *folder;
    EXPECT_EQ(cutl::commonDataFolder(), *folder);
}

TEST(CommonDataFolder, UnknownIsAFailedCheckAndAFallback) {
    test::CheckRecorder checks;
    const auto previous = cutl::setCommonDataLookup([] { return std::optional<std::string>(); });
    EXPECT_EQ(cutl::commonDataFolder(), "./data");
    EXPECT_THAT(checks.take(), testing::ElementsAre(test::FailedCheck{
                                   "CHECKF", "cutl_environment.cpp", 106, 0, ""}));
    const test::ScopedAssertionLevel silent(-1);
    EXPECT_EQ(cutl::commonDataFolder(), "./data");
    EXPECT_EQ(cutl::setCommonDataLookup(previous)(), std::nullopt);
}

} // namespace
