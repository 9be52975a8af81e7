#include "core_utf.h"

#include <gtest/gtest.h>

using namespace std::string_literals;

namespace {

struct Case {
    const char* name;
    std::string text;
};
void PrintTo(const Case& c, std::ostream* out) { *out << c.name; }
std::string nameOf(const testing::TestParamInfo<Case>& info) { return info.param.name; }

class WellFormed : public testing::TestWithParam<Case> {};

TEST_P(WellFormed, SurvivesTheWayToTheSystemAndBack) {
    EXPECT_TRUE(core::isValidUtf8(GetParam().text));
    core::SystemText system;
    ASSERT_TRUE(core::fromUtf8(GetParam().text, system));
    std::string back = "old";
    ASSERT_TRUE(core::toUtf8(system, back));
    EXPECT_EQ(back, GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(
    Utf8, WellFormed,
    testing::Values(Case{"Empty", ""}, Case{"EmbeddedNul", "a\0b"s}, Case{"LastOneByte", "\x7F"},
                    Case{"TwoByteLimits", "\xC2\x80 \xDF\xBF"},
                    Case{"ThreeByteLimits", "\xE0\xA0\x80 \xEF\xBF\xBF"},
                    Case{"AroundSurrogates", "\xED\x9F\xBF \xEE\x80\x80"},
                    Case{"FourByteLimits", "\xF0\x90\x80\x80 \xF4\x8F\xBF\xBF"},
                    Case{"Words", "Zürich Ωμέγα 設定 🙂"}),
    nameOf);

class Malformed : public testing::TestWithParam<Case> {};

TEST_P(Malformed, IsRefusedAndChangesNothing) {
    // Alone, and with good text on both sides.
    for (const std::string& text : {GetParam().text, "abc" + GetParam().text + "def"}) {
        EXPECT_FALSE(core::isValidUtf8(text));
        core::SystemText system(1, 'x');
        EXPECT_FALSE(core::fromUtf8(text, system));
        EXPECT_FALSE(core::pathFromUtf8(text, system));
        EXPECT_EQ(system, core::SystemText(1, 'x'));
    }
}

INSTANTIATE_TEST_SUITE_P(
    Utf8, Malformed,
    testing::Values(
        Case{"LoneContinuation", "\x80"}, Case{"OverlongNul", "\xC0\x80"},
        Case{"OverlongTwoBytes", "\xC1\xBF"}, Case{"OverlongThreeBytes", "\xE0\x9F\xBF"},
        Case{"OverlongFourBytes", "\xF0\x8F\xBF\xBF"}, Case{"FirstSurrogate", "\xED\xA0\x80"},
        Case{"LastSurrogate", "\xED\xBF\xBF"}, Case{"AboveTheLastCodePoint", "\xF4\x90\x80\x80"},
        Case{"FirstByteF5", "\xF5\x80\x80\x80"}, Case{"FirstByteFF", "\xFF"},
        Case{"SecondByteMissing", "\xC3"}, Case{"ThirdByteMissing", "\xE2\x82"},
        Case{"FourthByteMissing", "\xF0\x9F\x99"}, Case{"ThirdByteWrong", "\xE2\x82\x41"},
        Case{"FourthByteWrong", "\xF0\x9F\x99\xC2"}, Case{"Latin1", "Z\xFCrich"}),
    nameOf);

TEST(PathFromUtf8, RefusesWhatTheSystemWouldCut) {
    core::SystemText system;
    EXPECT_FALSE(core::pathFromUtf8("settings\0.bak"s, system));
    EXPECT_TRUE(core::pathFromUtf8("", system));
}

} // namespace
