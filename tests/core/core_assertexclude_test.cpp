#include "core_assertexclude.h"

#include "core_varargs.h"
#include "core_wrapper.h"
#include "temp_folder.h"

#include <gtest/gtest.h>

#include <filesystem>

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

struct Case {
    int line;
    const char* text;
    bool holds;
};
const Case kCases[] = {
    {__LINE__, "core_time.cpp 1026 2024-03-01", true},
    {__LINE__, " core_time.cpp\t1026  2024-03-01 because of reasons\r\n", true},
    {__LINE__, "core_time.cpp 01026 2024-03-01", true},
    {__LINE__, "#core_time.cpp 1026 2024-03-01", false},
    {__LINE__, "# core_time.cpp 1026 2024-03-01", false},
    {__LINE__, "core_time.cpp 1026", false},
    {__LINE__, "core_time.cpp 1026x 2024-03-01", false},
    {__LINE__, "core_time.cpp 99999999999 2024-03-01", false},
    {__LINE__, "core_time.cpp 1026 2024-3-01", false},
    {__LINE__, "core_time.cpp 1026 2024-3-001", false},
    {__LINE__, "core_time.cpp 1026 2024/03/01", false},
    {__LINE__, "core_time.cpp 1026 2024-03--1", false},
    {__LINE__, "core_time.cpp 1026 2024-03-01T", false},
    // Fields that are no numbers count as 0: the last day of February, and year 0.
    {__LINE__, "core_time.cpp 1026 2024-03-xx", true},
    {__LINE__, "core_time.cpp 1026 x024-03-01", false},
    {__LINE__, "core_time.cpp 1026 9999-99-99", false},
};

TEST(AssertExclude, TakesOnlyWellFormedLines) {
    for (const Case& row : kCases) {
        SCOPED_TRACE("row at line " + std::to_string(row.line));
        EXPECT_EQ(listOf(row.text).contains("core_time.cpp", 1026), row.holds);
    }
    for (const int32_t line : {0, -1})
        EXPECT_FALSE(listOf(core::format("a %d 2024-03-01", line)).contains("a", line));
}

TEST(AssertExclude, HoldsLessThanThreeDaysEitherWay) {
    const struct {
        const char* date;
        core::CivilTime now;
        bool holds;
    } rows[] = {
        {"2024-02-28", {2024, 3, 1, 23, 59, 59}, true}, // across 29 February
        {"2024-02-28", {2024, 3, 2, 0, 0, 0}, false},
        {"2024-03-04", {2024, 3, 1, 0, 0, 0}, false},
        {"2024-03-04", {2024, 3, 1, 0, 0, 1}, true},
        {"2023-12-31", {2024, 1, 2, 12, 0, 0}, true},
        {"2024-02-25", kNoon, false},
    };
    for (const auto& row : rows)
        EXPECT_EQ(listOf(std::string("a 1 ") + row.date, row.now).contains("a", 1), row.holds)
            << row.date;
}

TEST(AssertExclude, FindsExactlyTheSitesOfItsFile) {
    const std::string today = " 2024-03-01\n";
    const core::AssertExclude list = listOf("m 20" + today + "m 3" + today + "\nz 1" + today +
                                            "a 7" + today + "\xC3\xA4 5" + today + "m 20" + today);
    EXPECT_TRUE(list.contains("m", 20));
    EXPECT_TRUE(list.contains("m", 3));
    EXPECT_TRUE(list.contains("z", 1));
    EXPECT_TRUE(list.contains("a", 7));
    EXPECT_TRUE(list.contains("\xC3\xA4", 5));
    EXPECT_FALSE(list.contains("m", 7));
    EXPECT_FALSE(list.contains("M", 3));
    EXPECT_FALSE(list.contains("", 3));
    EXPECT_FALSE(listOf("").contains("m", 3));
}

TEST(AssertExclude, ReadsTheRestOfALongLineAsALineOfItsOwn) {
    const core::AssertExclude list = listOf(std::string(1000, 'x') + "a 1 2024-03-01");
    EXPECT_TRUE(list.contains("a", 1));
}

/// Makes a folder the working folder for a scope.
class ScopedWorkingFolder {
public:
    explicit ScopedWorkingFolder(const std::string& path)
        : d_previous(std::filesystem::current_path()) {
        std::filesystem::current_path(path);
    }
    ~ScopedWorkingFolder() { std::filesystem::current_path(d_previous); }
    ScopedWorkingFolder(const ScopedWorkingFolder&) = delete;
    ScopedWorkingFolder& operator=(const ScopedWorkingFolder&) = delete;

private:
    std::filesystem::path d_previous;
};

TEST(AssertExclude, PrefersTheFileInTheSettingsFolder) {
    const test::TempFolder folder;
    const ScopedWorkingFolder working(folder.path());
    const core::CivilTime now = core::localCivilTime(core::now());
    const std::string today = core::format(" %04d-%02d-%02d\n", now.year, now.month, now.day);

    core::AssertExclude none;
    none.load();
    EXPECT_FALSE(none.contains("outer", 1));

    test::writeFile("assert.exclude", "outer 1" + today);
    core::AssertExclude outer;
    outer.load();
    EXPECT_TRUE(outer.contains("outer", 1));

    std::filesystem::create_directory("settings");
    test::writeFile("settings/assert.exclude", "inner 1" + today);
    core::AssertExclude inner;
    inner.load();
    EXPECT_TRUE(inner.contains("inner", 1));
    EXPECT_FALSE(inner.contains("outer", 1));
}

} // namespace
