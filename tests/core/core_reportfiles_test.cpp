// The files that say what is reported: testing.ini and assert.exclude.

#include "core_reportsettings.h"
#include "core_wrapper.h"
#include "internal/core_assertexclude.h"
#include "temp_folder.h"
#include "testing_logrecorder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <tuple>

namespace {

using core::ReportSettings;

/// What the object is when it has read such a file.
template <typename Object, typename... Arguments>
Object reading(const std::string& text, Object object, const Arguments&... arguments) {
    const test::TempFolder folder;
    test::writeFile(folder / "file", text);
    FILE* file = core::Wrapper::fopen(folder / "file", "r");
    object.read(file, arguments...);
    std::fclose(file);
    return object;
}

ReportSettings settingsOf(const std::string& text, uint32_t flags = 0) {
    ReportSettings settings;
    settings.flags = flags;
    return reading(text, settings);
}

core::AssertExclude listOf(const std::string& text,
                           const core::CivilTime& now = {2024, 3, 1, 12, 0, 0}) {
    return reading(text, core::AssertExclude(), now);
}

TEST(ReportSettings, SkipsWhatIsOutOfRange) {
    const ReportSettings settings =
        settingsOf("send_port 1\n[ general]\nsend_port 2\n  [general]\t\r\nsend_port 65535\n"
                   "send_port 0\nsend_port 7x\nsend_port\nsymbol_server_address\ts\r\n"
                   "assert_level 3\n");
    EXPECT_EQ(settings.sendPort, 25000);
    EXPECT_EQ(settings.symbolServerAddress, "s");
    EXPECT_EQ(settings.assertLevel, 1);
}

TEST(ReportSettings, FlagsAreSetAndClearedByTheirKeys) {
    const std::tuple<const char*, uint32_t, uint32_t> rows[] = {
        {"[assert]\nsend true\nbacktrace enable", 0, 0b000110},
        {"[alert]\nsend true\nbacktrace enable", 0, 0b110000},
        {"[assert]\nsend false\nbacktrace disable\ndefault true", 0b111111, 0b111001},
        // Whatever is switched on, both abort bits go.
        {"[assert]\nabort true", 0b111111, 0b110110},
        {"[alert]\nsend enable", 0b101101, 0b110100},
        {"[assert]\nsend True\nsend 1\nsend", 0b001001, 0b001001},
    };
    for (const auto& [text, before, after] : rows)
        EXPECT_EQ(settingsOf(text, before).flags, after) << text;
}

TEST(ReportSettings, ReportsWhatItDoesNotKnow) {
    test::LogRecorder log;
    settingsOf("[50%s]\nsend x\n[]\n[assert]\nabort yes\nunknown yes\ndefault yes\n[alert\n");
    const std::string section = "WARN core::TestInterface::loadIni - unhandled section '";
    EXPECT_THAT(log.take(),
                testing::ElementsAre(section + "50%s'", section + "'",
                                     "WARN Log at core_testinterface.cpp:152 - unknown value "
                                     "'yes' of 'abort'"));
}

TEST(AssertExclude, TakesOnlyWellFormedLines) {
    // What is no number counts as 0, and the rest of a long line is a line of its own.
    const core::AssertExclude list = listOf(
        "a 01 2024-03-01\n\na 2 2024-03-xx\n a\t3  2024-03-01 because of reasons\r\n" +
        std::string(1000, 'x') +
        "a 4 2024-03-01\n#a 5 2024-03-01\n# a 6 2024-03-01\na 7\n"
        "a 8x 2024-03-01\na 4294967305 2024-03-01\na 10 2024-3-001\na 11 2024/03/01\n"
        "a 12 2024-03--1\na 13 2024-19-01\na 14 2024-03-33\na 15 2024-03-01T\n"
        "a 16 9999-99-99\na 0 2024-03-01\nz 18 2024-03-01\nä 19 2024-03-01\nm 20 2024-03-01");
    for (int32_t line = 0; line <= 20; ++line)
        EXPECT_EQ(list.contains("a", line), line >= 1 && line <= 4) << line;
    EXPECT_TRUE(list.contains("z", 18) && list.contains("ä", 19) && list.contains("m", 20));
    EXPECT_FALSE(list.contains("M", 20) || list.contains("", 20) || list.contains("#a", 5));
}

TEST(AssertExclude, HoldsLessThanThreeDaysEitherWay) {
    const auto holds = [](const char* date, const core::CivilTime& now) {
        return listOf(std::string("a 1 ") + date, now).contains("a", 1);
    };
    EXPECT_TRUE(holds("2024-02-28", {2024, 3, 1, 23, 59, 59})); // across 29 February
    EXPECT_FALSE(holds("2024-02-28", {2024, 3, 2, 0, 0, 0}));
    EXPECT_FALSE(holds("2024-03-04", {2024, 3, 1, 0, 0, 0}));
    EXPECT_TRUE(holds("2024-03-04", {2024, 3, 1, 0, 0, 1}));
    EXPECT_FALSE(holds("2024-03-xx", {2024, 3, 3, 0, 0, 0})) << "a day 0 before the first";
}

} // namespace
