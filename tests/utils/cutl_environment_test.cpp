#include "cutl_environment.h"

#include "testing_checkrecorder.h"
#include "testing_matchers.h"

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
    const auto previous = cutl::setCommonDataLookup([] { return std::optional<std::string>(); });
    EXPECT_THAT([] { EXPECT_EQ(cutl::commonDataFolder(), "./data"); },
                test::FailsCheck({"cutl_environment.cpp", 106}, ""));
    const test::ScopedAssertionLevel silent(-1);
    EXPECT_EQ(cutl::commonDataFolder(), "./data");
    EXPECT_EQ(cutl::setCommonDataLookup(previous)(), std::nullopt);
}

} // namespace
