#include "core_varargs.h"

#include "check_recorder.h"

#include <bit>
#include <clocale>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace {

using core::format;
using test::FailedCheck;

enum class Colour : uint8_t { Red = 7 };

FailedCheck mismatch(int line, const std::string& letter, const std::string& text) {
    return {"CHECKF", "core_varargs.cpp", 16, 0,
            "core_varargs.h:" + std::to_string(line) + ": ch=" + letter + " format='" + text + "'"};
}
FailedCheck noPlaceholder(const std::string& letter) {
    return {"CHECKF", "core_varargs.cpp", 35, 0, letter};
}
FailedCheck counts(const std::string& text, int inFormat, int inPack) {
    return {"CHECKF", "core_varargs.cpp", 462, 0,
            "format='" + text + "' args_in_format_string=" + std::to_string(inFormat) +
                " args_in_parameter_pack=" + std::to_string(inPack)};
}
const FailedCheck kShortTruncation{"false", "core_varargs.cpp", 65, 1, ""};

struct Case {
    int line;
    const char* name;
    std::function<std::string()> make;
    std::string text;
    std::vector<FailedCheck> checks{};
};

class Format : public testing::TestWithParam<Case> {};

TEST_P(Format, Prints) {
    SCOPED_TRACE("row at line " + std::to_string(GetParam().line));
    test::CheckRecorder checks;
    EXPECT_EQ(GetParam().make(), GetParam().text);
    EXPECT_THAT(checks.take(), testing::ElementsAreArray(GetParam().checks));
}

// clang-format off
const Case kIntegers[] = {
    {__LINE__, "Plain", [] { return format("%d|%i|%u|%o|%x|%X", -5, 6, 7U, 8, 255, 255); }, "-5|6|7|10|ff|FF"},
    {__LINE__, "LetterDecidesTheSign", [] { return format("%d %u %x", 4294967295U, -1, -1); }, "-1 4294967295 ffffffff"},
    {__LINE__, "EightBitsAreSignExtended", [] { return format("%d %u %x %d", uint8_t{200}, uint8_t{200}, uint8_t{200}, int8_t{-1}); }, "-56 4294967240 ffffffc8 -1"},
    {__LINE__, "SixteenBitsStaySo", [] { return format("%u %x %d", int16_t{-1}, int16_t{-1}, uint16_t{65535}); }, "65535 ffff -1"},
    {__LINE__, "SixtyFourBits", [] { return format("%d %u %o", INT64_MIN, INT64_MAX, UINT64_MAX); }, "-9223372036854775808 9223372036854775807 1777777777777777777777"},
    {__LINE__, "BoolsAndEnums", [] { return format("%d %d", true, Colour::Red); }, "1 7"},
    {__LINE__, "ModifiersMeanNothing", [] { return format("%hhd %hd %ld %lld %zd %jd %td %Ld", 1, 2, 3, INT64_C(4), 5, 6, 7, 8); }, "1 2 3 4 5 6 7 8"},
    {__LINE__, "Width", [] { return format("%4d|%-4d|%04d|%1d", 7, 7, -5, 123); }, "   7|7   |-005|123"},
    {__LINE__, "ZeroFillWinsOverLeft", [] { return format("%-04d", 7); }, "0007"},
    {__LINE__, "SpaceWinsOverPlus", [] { return format("% +d|%+d|% d|%+d", 3, 3, -3, -3); }, " 3|+3|-3|-3"},
    {__LINE__, "UnsignedHasNoSign", [] { return format("%+u|% x|%#x|%#o", 3, 3, 3, 8); }, "3|3|3|10"},
    {__LINE__, "PrecisionIsZeroFilledWidth", [] { return format("%.3d|%8.3d|%.3d|%.0d|%5.0d|%-.3x", 7, 7, -5, 0, 1, 10); }, "007|007|-05|0|    1|00a"},
    {__LINE__, "AsCharacter", [] { return format("%c%c", 65, INT64_C(66)); }, "AB"},
};
const Case kCharacters[] = {
    {__LINE__, "Padded", [] { return format("%c|%3c|%-3c|", 'a', 'b', 'c'); }, "a|  b|c  |"},
    {__LINE__, "NulPrintsNothing", [] { return format("[%c%3c]", '\0', '\0'); }, "[]"},
};
const Case kStrings[] = {
    {__LINE__, "EveryKind", [] { char chars[] = "a"; return format("%s%s%s%s", chars, "b", std::string("c"), std::string_view("d")); }, "abcd"},
    {__LINE__, "Null", [] { return format("%s|%8s|%S", static_cast<const char*>(nullptr), static_cast<char*>(nullptr), static_cast<char*>(nullptr)); }, "(null)|  (null)|(null)"},
    {__LINE__, "EmbeddedNul", [] { return format("%s", std::string("a\0b", 3)); }, std::string("a\0b", 3)},
    {__LINE__, "WidthAndPrecision", [] { return format("%5s|%-5s|%.2s|%4.1s|%.0s", "abc", "abc", "abc", "abc", "abc"); }, "  abc|abc  |ab|   a|abc"},
    {__LINE__, "Truncating", [] { return format("%6S|%6S|%6S|%S|%4S", "abcdefghij", "abc", "abcdef", "abcdefghij", "abcde"); }, "abc...|abc|abcdef|abcdefghij|a..."},
    {__LINE__, "TruncationTestsTheFullLength", [] { return format("%6.2S|%6.2S", "abcdefghij", "abcd"); }, "abc...|ab"},
    {__LINE__, "ShortTruncationIsChecked", [] { return format("%2S", "abcdef"); }, "ab", {kShortTruncation}},
    {__LINE__, "LongerThanTheEstimateLooks", [] { const std::string x(20000, 'x'); return format("%s", x.c_str()); }, std::string(20000, 'x')},
};
const Case kPointers[] = {
    {__LINE__, "Null", [] { return format("%p|%10p|%-7p|", nullptr, nullptr, static_cast<int*>(nullptr)); }, "(nil)|     (nil)|(nil)  |"},
    {__LINE__, "Hexadecimal", [] { return format("%p", reinterpret_cast<void*>(0xabc)); }, "0xabc"},
    {__LINE__, "PaddedAfterThePrefix", [] { return format("%6p|%06p|%1p", reinterpret_cast<void*>(1), reinterpret_cast<void*>(1), reinterpret_cast<void*>(1)); }, "0x   1|0x0001|0x1"},
    {__LINE__, "OfAString", [] { return format("%p", static_cast<const char*>(nullptr)); }, "(nil)"},
};
const Case kFloats[] = {
    {__LINE__, "EveryLetter", [] { return format("%f %F %g %G %e %E %a %A", 1.5, 1.5, 1e-10, 1e-10, 1.5, 1.5, 1.0, 0.1F); }, "1.500000 1.500000 1e-10 1E-10 1.500000e+00 1.500000E+00 0x1p+0 0X1.99999AP-4"},
    {__LINE__, "SpacesOnly", [] { return format("%5.1f|%05.1f|%-6.1f|%+f|% f", 2.25, 2.25, 2.25, 1.0, 1.0); }, "  2.2|  2.2|2.2   |1.000000|1.000000"},
    {__LINE__, "CutAtTwentyThree", [] { return format("%f|%.30f|%.2000000000f", 1e300, 0.5, 0.25); }, "10000000000000000525047|0.500000000000000000000|0.250000000000000000000"},
    {__LINE__, "NotNumbers", [] { const double inf = std::numeric_limits<double>::infinity(); return format("%f %F %g", inf, -inf, std::numeric_limits<double>::quiet_NaN()); }, "inf -INF nan"},
};
const Case kLiterals[] = {
    {__LINE__, "Percent", [] { return format("100%% of %d%%", 5); }, "100% of 5%"},
    {__LINE__, "LonePercentAtEnd", [] { return format("%d%", 5); }, "5"},
    {__LINE__, "NoDirective", [] { return format("text"); }, "text"},
    {__LINE__, "FoldedWidth", [] { return format("%.99999999999999999999s", "abc"); }, "abc"},
    {__LINE__, "PaddingIsBounded", [] { return std::to_string(format("%2000000000d", 1).size()); }, "1000001"},
};
const Case kMismatches[] = {
    {__LINE__, "TextAsNumber", [] { return format("%d", "x"); }, "0", {mismatch(249, "d", "%d")}},
    {__LINE__, "TextAsPointer", [] { return format("%p", std::string("x")); }, "(nil)", {mismatch(249, "p", "%p")}},
    {__LINE__, "TextAsFloat", [] { return format("%8.1f|", "x"); }, "     0.0|", {mismatch(249, "f", "%8.1f|")}},
    {__LINE__, "PointerAsNumber", [] { return format("%x", nullptr); }, "0", {mismatch(311, "x", "%x")}},
    {__LINE__, "NumberAsText", [] { return format("[%5s]", 5); }, "[]", {mismatch(336, "s", "[%5s]")}},
    {__LINE__, "ShortAndLongAsPointer", [] { return format("%p%p", int16_t{1}, INT64_C(1)); }, "(nil)(nil)", {mismatch(336, "p", "%p%p"), mismatch(336, "p", "%p%p")}},
    {__LINE__, "CharacterAsText", [] { return format("%s", 'c'); }, "", {mismatch(349, "s", "%s")}},
    {__LINE__, "FloatAsNumber", [] { return format("%+05.9d|%-3d|", 1.5, 1.5); }, "+0000|0  |", {mismatch(504, "d", "%+05.9d|%-3d|"), mismatch(504, "d", "%+05.9d|%-3d|")}},
    {__LINE__, "FloatAsCharacter", [] { return format("%5c", 1.5); }, "?", {mismatch(504, "c", "%5c")}},
    {__LINE__, "NumberAsFloat", [] { return format("%f", 1); }, "0.000000", {mismatch(336, "f", "%f")}},
    {__LINE__, "UnknownLetter", [] { return format("%y", 1); }, "", {mismatch(336, "y", "%y"), noPlaceholder("y")}},
    {__LINE__, "TruncatingNumber", [] { return format("%5S", 1); }, "", {mismatch(336, "S", "%5S"), noPlaceholder("S")}},
    {__LINE__, "StarIsALetter", [] { return format("%*d", 1); }, "d", {mismatch(336, "*", "%*d"), noPlaceholder("*")}},
    {__LINE__, "ForeignPrefixIsALetter", [] { return format("%I64d", 1); }, "64d", {mismatch(336, "I", "%I64d"), noPlaceholder("I")}},
    {__LINE__, "CutOffByTheEnd", [] { return format("%5", 1); }, "", {mismatch(336, "", "%5"), noPlaceholder("")}},
    {__LINE__, "CutOffModifier", [] { return format("%l", "x"); }, "", {mismatch(249, "", "%l"), noPlaceholder("")}},
    {__LINE__, "MissingArgument", [] { return format("%d %d", 5); }, "5 0", {mismatch(480, "d", "%d %d"), counts("%d %d", 2, 1)}},
    {__LINE__, "NoArguments", [] { return format("%s|%f"); }, "|0.000000", {mismatch(480, "s", "%s|%f"), mismatch(480, "f", "%s|%f"), counts("%s|%f", 2, 0)}},
    {__LINE__, "SurplusArgument", [] { return format("%d", 1, 2, 3); }, "1", {counts("%d", 1, 3)}},
    {__LINE__, "LonePercentIsNotCounted", [] { return format("%", 1); }, "", {counts("%", 0, 1)}},
};
// clang-format on

const auto kRowName = [](const auto& row) { return row.param.name; };
INSTANTIATE_TEST_SUITE_P(Integers, Format, testing::ValuesIn(kIntegers), kRowName);
INSTANTIATE_TEST_SUITE_P(Characters, Format, testing::ValuesIn(kCharacters), kRowName);
INSTANTIATE_TEST_SUITE_P(Strings, Format, testing::ValuesIn(kStrings), kRowName);
INSTANTIATE_TEST_SUITE_P(Pointers, Format, testing::ValuesIn(kPointers), kRowName);
INSTANTIATE_TEST_SUITE_P(Floats, Format, testing::ValuesIn(kFloats), kRowName);
INSTANTIATE_TEST_SUITE_P(Literals, Format, testing::ValuesIn(kLiterals), kRowName);
INSTANTIATE_TEST_SUITE_P(Mismatches, Format, testing::ValuesIn(kMismatches), kRowName);

TEST(FormatLevels, BelowZeroNothingIsReportedAndPlaceholdersStay) {
    test::CheckRecorder checks;
    const test::ScopedAssertionLevel off(-1);
    EXPECT_EQ(format("%d %d %2S", "x", 1.5, "abc", 4), "0 0 ab");
    EXPECT_TRUE(checks.take().empty());
}

TEST(FormatLevels, ShortTruncationIsALevelOneCheck) {
    test::CheckRecorder checks;
    const test::ScopedAssertionLevel zero(0);
    EXPECT_EQ(format("%2S", "abc"), "ab");
    EXPECT_TRUE(checks.take().empty());
}

TEST(FormatAppends, ToWhatIsThere) {
    std::string out = "a";
    const core::FormatArg args[] = {1, "b"};
    core::formatTo(out, "%d%s", args, 2);
    EXPECT_EQ(out, "a1b");
}

std::string byRuntime(const char* directive, double value) {
    char text[1600];
    std::snprintf(text, sizeof text, directive, value); // NOLINT
    return std::string(text).substr(0, 23);
}

// Doubles print as the runtime library prints them, whatever their bits.
TEST(FormatFloats, AgreeWithTheRuntimeLibrary) {
    std::mt19937_64 random(20220329);
    const char* const directives[] = {"%f",   "%.0f", "%.3F",  "%e", "%.17E", "%g",
                                      "%.1g", "%.0G", "%.40g", "%a", "%.2A"};
    for (int round = 0; round < 4000; ++round) {
        const uint64_t bits = random();
        auto value = std::bit_cast<double>(bits);
        if (round % 2 == 0)
            value = static_cast<double>(static_cast<int64_t>(bits) >> 40) / 1000;
        for (const char* directive : directives)
            ASSERT_EQ(format(directive, value), byRuntime(directive, value)) << directive;
    }
}

// A toolkit may switch the process to the user's locale; messages stay as they are.
TEST(FormatFloats, KeepThePointInEveryLocale) {
    const std::string before = std::setlocale(LC_NUMERIC, nullptr);
    const char* const comma = std::setlocale(LC_NUMERIC, "de_DE.UTF-8");
    if (comma == nullptr)
        GTEST_SKIP() << "no locale with a decimal comma on this machine";
    const std::string text = format("%.1f %.1e %.1a", 1.5, 1.5, 1.5);
    std::setlocale(LC_NUMERIC, before.c_str());
    EXPECT_EQ(text, "1.5 1.5e+00 0x1.8p+0");
}

#if GTEST_HAS_DEATH_TEST
bool stopHere(const char*, const char*, int32_t, int32_t, const std::string&) { return true; }

// Every check of the engine stops the program by a real access fault when told to.
TEST(FormatDeathTest, StopsByAFault) {
    const auto stopping = [](auto&& make) {
        core::storeFailureHandler(&stopHere);
        make();
    };
    EXPECT_DEATH(stopping([] { format("%d", "x"); }), "");
    EXPECT_DEATH(stopping([] { format("%2S", "abc"); }), "");
    EXPECT_DEATH(stopping([] { format("", 1); }), "");
}
#endif

} // namespace
