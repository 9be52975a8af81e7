#include "internal/core_assertexclude.h"

#include "core_wrapper.h"
#include "temp_folder.h"

#include <gtest/gtest.h>

namespace {

constexpr core::CivilTime kNoon{2024, 3, 1, 12, 0, 0};

core::AssertExclude listOf(const std::string& text, const core::CivilTime& now = kNoon) {
    const test::TempFolder folder;
    test::writeFile(folder / "list", text);
    FILE* file = core::Wrapper::fopen(folder / "list", "r");
    core::AssertExclude list;
    list.read(file, now);
    std::fclose(file);
    return list;
}

TEST(AssertExclude, TakesOnlyWellFormedLines) {
    // What is no number counts as 0, and the rest of a long line is a line of its own.
    for (const std::string& text :
         {std::string("a.cpp 026 2024-03-01"), std::string("a.cpp 26 2024-03-xx"),
          std::string(" a.cpp\t26  2024-03-01 because of reasons\r\n"),
          std::string(1000, 'x') + "a.cpp 26 2024-03-01"})
        EXPECT_TRUE(listOf(text).contains("a.cpp", 26)) << text;
    for (const char* text :
         {"", "#a.cpp 26 2024-03-01", "# a.cpp 26 2024-03-01", "a.cpp 26", "a.cpp 26x 2024-03-01",
          "a.cpp 4294967322 2024-03-01", "a.cpp 26 2024-3-001", "a.cpp 26 2024/03/01",
          "a.cpp 26 2024-03--1", "a.cpp 26 2024-19-01", "a.cpp 26 2024-03-33",
          "a.cpp 26 2024-03-01T", "a.cpp 26 9999-99-99"})
        EXPECT_FALSE(listOf(text).contains("a.cpp", 26)) << text;
    EXPECT_FALSE(listOf("a 0 2024-03-01").contains("a", 0));
}

TEST(AssertExclude, HoldsLessThanThreeDaysEitherWay) {
    const auto holds = [](const char* date, const core::CivilTime& now) {
        return listOf(std::string("a 1 ") + date, now).contains("a", 1);
    };
    EXPECT_TRUE(holds("2024-02-28", {2024, 3, 1, 23, 59, 59})); // across 29 February
    EXPECT_FALSE(holds("2024-02-28", {2024, 3, 2, 0, 0, 0}));
    EXPECT_FALSE(holds("2024-03-04", {2024, 3, 1, 0, 0, 0}));
    EXPECT_TRUE(holds("2024-03-04", {2024, 3, 1, 0, 0, 1}));
}

TEST(AssertExclude, FindsExactlyTheSitesOfItsFile) {
    const core::AssertExclude list =
        listOf("m 20 2024-03-01\nm 3 2024-03-01\n\nz 1 2024-03-01\nä 5 2024-03-01\n");
    EXPECT_TRUE(list.contains("m", 20) && list.contains("m", 3));
    EXPECT_TRUE(list.contains("z", 1) && list.contains("ä", 5));
    EXPECT_FALSE(list.contains("m", 7) || list.contains("M", 3) || list.contains("", 3));
}

} // namespace
