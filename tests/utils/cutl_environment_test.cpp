#include "cutl_environment.h"

#include "check_recorder.h"

#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <optional>
#include <string>

namespace {

/// Answers the look-up for a scope.
class ScopedLookup {
public:
    explicit ScopedLookup(cutl::CommonDataLookup lookup)
        : d_previous(cutl::setCommonDataLookup(lookup)) {}
    ~ScopedLookup() { cutl::setCommonDataLookup(d_previous); }
    ScopedLookup(const ScopedLookup&) = delete;
    ScopedLookup& operator=(const ScopedLookup&) = delete;

    cutl::CommonDataLookup previous() const { return d_previous; }

private:
    cutl::CommonDataLookup d_previous;
};

TEST(CommonDataFolder, IsAnExistingFolderOfTheSystem) {
    const std::optional<std::string> folder = cutl::systemCommonDataFolder();
    ASSERT_TRUE(folder.has_value());
    EXPECT_TRUE(std::filesystem::is_directory(*folder)) << *folder;
    EXPECT_EQ(cutl::commonDataFolder(), *folder);
}

TEST(CommonDataFolder, IsWhatTheLookupSays) {
    test::CheckRecorder checks;
    const ScopedLookup lookup([] { return std::optional<std::string>("C:\\ProgramData"); });
    EXPECT_EQ(lookup.previous(), &cutl::systemCommonDataFolder);
    EXPECT_EQ(cutl::commonDataFolder(), "C:\\ProgramData");
    EXPECT_THAT(checks.take(), testing::IsEmpty());
}

TEST(CommonDataFolder, UnknownIsAFailedCheckAndAFallback) {
    test::CheckRecorder checks;
    const ScopedLookup lookup([] { return std::optional<std::string>(); });
    EXPECT_EQ(cutl::commonDataFolder(), "./data");
    EXPECT_THAT(checks.take(), testing::ElementsAre(test::FailedCheck{
                                   "CHECKF", "cutl_environment.cpp", 106, 0, ""}));
}

TEST(CommonDataFolder, FallbackNeedsNoReport) {
    const test::ScopedAssertionLevel silent(-1);
    const ScopedLookup lookup([] { return std::optional<std::string>(); });
    EXPECT_EQ(cutl::commonDataFolder(), "./data");
}

} // namespace
