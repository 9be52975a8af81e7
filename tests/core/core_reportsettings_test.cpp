#include "core_reportsettings.h"

#include "core_wrapper.h"
#include "log_recorder.h"
#include "temp_folder.h"

#include <gmock/gmock.h>

#include <tuple>

namespace {

using core::ReportSettings;

ReportSettings settingsOf(const std::string& text, uint32_t flags = 0) {
    const test::TempFolder folder;
    test::writeFile(folder / "ini", text);
    FILE* file = core::Wrapper::fopen(folder / "ini", "r");
    ReportSettings settings;
    settings.flags = flags;
    settings.read(file);
    std::fclose(file);
    return settings;
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

} // namespace
