#include "core_varargs.h"

#include "testing_checkrecorder.h"

#include <clocale>
#include <functional>
#include <gtest/gtest.h>
#include <limits>
#include <vector>

namespace {

using core::format;
using test::FailedCheck;

constexpr auto runtime = core::runtimeFormat;

enum class Colour : uint16_t { Red = 7 };
enum class Low : int64_t { Bottom = -9000000000 };
enum class High : uint64_t { Top = UINT64_MAX };

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
    const char* name;
    std::function<std::string()> make;
    std::string text;
    std::vector<FailedCheck> checks{};
};

// clang-format off
const Case kCases[] = {
    // Integers
    {"LetterDecidesTheSign", [] { return format("%d %i %u %x %X %o", 4294967295U, 6, -1, -1, -1, 8); }, "-1 6 4294967295 ffffffff FFFFFFFF 10"},
    {"EightBitsAreSignExtended", [] { return format("%d %u %x %d", uint8_t{200}, uint8_t{200}, uint8_t{200}, int8_t{-1}); }, "-56 4294967240 ffffffc8 -1"},
    {"SixteenBitsStaySo", [] { return format("%u %x %d", int16_t{-1}, int16_t{-1}, uint16_t{65535}); }, "65535 ffff -1"},
    {"SixtyFourBits", [] { return format("%d %u %o", INT64_MIN, INT64_MAX, UINT64_MAX); }, "-9223372036854775808 9223372036854775807 1777777777777777777777"},
    {"BoolsAndEnums", [] { return format("%d %d %d %u", true, Colour::Red, Low::Bottom, High::Top); }, "1 7 -9000000000 18446744073709551615"},
    {"ModifiersMeanNothing", [] { return format("%hhd %hd %ld %lld %zd %jd %td %Ld", 1, 2, 3, INT64_C(4), 5, 6, 7, 8); }, "1 2 3 4 5 6 7 8"},
    {"Width", [] { return format("%4d|%-4d|%04d|%1d", 7, 7, -5, 123); }, "   7|7   |-005|123"},
    {"SpaceWinsOverPlusAndZeroOverLeft", [] { return format("% +d|%+d|% d|%+d|%-04d", 3, 3, -3, -3, 7); }, " 3|+3|-3|-3|0007"},
    {"UnsignedHasNoSign", [] { return format("%+u|% x|%#x|%#o", 3, 3, 3, 8); }, "3|3|3|10"},
    {"PrecisionIsZeroFilledWidth", [] { return format("%.3d|%8.3d|%.3d|%.0d|%5.0d|%-.3x", 7, 7, -5, 0, 1, 10); }, "007|007|-05|0|    1|00a"},
    // Characters
    {"Padded", [] { return format("%c|%3c|%-3c|%c%c", 'a', 'b', 'c', 65, INT64_C(66)); }, "a|  b|c  |AB"},
    {"NulPrintsNothing", [] { return format("[%c%3c]", '\0', '\0'); }, "[]"},
    // Strings
    {"EveryKind", [] { char chars[] = "a"; return format("%s%s%s%s", chars, "b", std::string("\0", 1), std::string_view("d")); }, std::string("ab\0d", 4)},
    {"NullText", [] { return format("%s|%8s|%S", static_cast<const char*>(nullptr), static_cast<char*>(nullptr), static_cast<char*>(nullptr)); }, "(null)|  (null)|(null)"},
    {"WidthAndPrecision", [] { return format("%5s|%-5s|%.2s|%4.1s|%.0s", "abc", "abc", "abc", "abc", "abc"); }, "  abc|abc  |ab|   a|abc"},
    {"Truncating", [] { return format("%6S|%6S|%6S|%S|%6.2S", "abcdefghij", "abc", "abcdef", "abcdefghij", "abcd"); }, "abc...|abc|abcdef|abcdefghij|ab"},
    {"ShortTruncationIsChecked", [] { return format("%2S", "abcdef"); }, "ab", {kShortTruncation}},
    {"LongerThanTheEstimateLooks", [] { const std::string x(20000, 'x'); return format("%s", x.c_str()); }, std::string(20000, 'x')},
    // Pointers
    {"NullPointer", [] { return format("%p|%10p|%-7p|", static_cast<const char*>(nullptr), nullptr, static_cast<int*>(nullptr)); }, "(nil)|     (nil)|(nil)  |"},
    {"PaddedAfterThePrefix", [] { return format("%6p|%06p|%1p", reinterpret_cast<void*>(1), reinterpret_cast<void*>(1), reinterpret_cast<void*>(0xabc)); }, "0x   1|0x0001|0xabc"},
    // Floats
    {"EveryLetter", [] { return format("%f %F %g %G %e %E %a %A", 1.5, 1.5, 1e-10, 1e-10, 1.5, 1.5, 1.0, 0.1F); }, "1.500000 1.500000 1e-10 1E-10 1.500000e+00 1.500000E+00 0x1p+0 0X1.99999AP-4"},
    {"SpacesOnly", [] { return format("%5.1f|%05.1f|%-6.1f|%+f|% f", 2.25, 2.25, 2.25, 1.0, 1.0); }, "  2.2|  2.2|2.2   |1.000000|1.000000"},
    {"CutAtTwentyThree", [] { return format("%f|%.30f|%.2000000000f|%.2000000000a", 1e300, 0.5, 0.25, 1.0); }, "10000000000000000525047|0.500000000000000000000|0.250000000000000000000|0x1.0000000000000000000"},
    {"NotNumbers", [] { const double inf = std::numeric_limits<double>::infinity(); return format("%f %F %g", inf, -inf, std::numeric_limits<double>::quiet_NaN()); }, "inf -INF nan"},
    // Literals
    {"Percent", [] { return format("100%% of %d%", 5); }, "100% of 5"},
    {"PaddingIsBounded", [] { return std::to_string(format("%2000000000d", 1).size()); }, "1000001"},
    // Mismatches
    {"TextAsNumber", [] { return format(runtime("%d"), "x"); }, "0", {mismatch(249, "d", "%d")}},
    {"TextAsFloat", [] { return format(runtime("%8.1f|"), "x"); }, "     0.0|", {mismatch(249, "f", "%8.1f|")}},
    {"PointerAsNumber", [] { return format(runtime("%x"), nullptr); }, "0", {mismatch(311, "x", "%x")}},
    {"NumberAsText", [] { return format(runtime("[%5s]"), 5); }, "[]", {mismatch(336, "s", "[%5s]")}},
    {"CharacterAsText", [] { return format(runtime("%s"), 'c'); }, "", {mismatch(349, "s", "%s")}},
    {"FloatAsNumber", [] { return format(runtime("%+05.9d|%-3d|"), 1.5, 1.5); }, "+0000|0  |", {mismatch(504, "d", "%+05.9d|%-3d|"), mismatch(504, "d", "%+05.9d|%-3d|")}},
    {"FloatAsCharacter", [] { return format(runtime("%5c"), 1.5); }, "?", {mismatch(504, "c", "%5c")}},
    {"StarIsALetter", [] { return format(runtime("%*d"), 1); }, "d", {mismatch(336, "*", "%*d"), noPlaceholder("*")}},
    {"CutOffByTheEnd", [] { return format(runtime("%5"), 1); }, "", {mismatch(336, "", "%5"), noPlaceholder("")}},
    {"MissingArgument", [] { return format(runtime("%d %d"), 5); }, "5 0", {mismatch(480, "d", "%d %d"), counts("%d %d", 2, 1)}},
    {"SurplusArgument", [] { return format(runtime("%d"), 1, 2, 3); }, "1", {counts("%d", 1, 3)}},
    {"LonePercentIsNotCounted", [] { return format(runtime("%"), 1); }, "", {counts("%", 0, 1)}},
};
// clang-format on

TEST(Format, PrintsEachKindByEachConversion) {
    test::CheckRecorder checks;
    for (const Case& row : kCases) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(row.make(), row.text);
        EXPECT_EQ(checks.take(), row.checks);
    }
    const test::ScopedAssertionLevel zero(0);
    EXPECT_EQ(format("%2S", "abc"), "ab");
    const test::ScopedAssertionLevel off(-1);
    EXPECT_EQ(format(runtime("%d %d %2S"), "x", 1.5, "abc", 4), "0 0 ab");
    EXPECT_TRUE(checks.take().empty());
}

// Whatever stands behind a '%', the compiler refuses it for just the arguments for which
// the engine fails a check.
TEST(Format, CompilerAndEngineAgree) {
    const std::vector<core::FormatArg> args = {
        'c', int16_t{1}, 1, int64_t{1}, 0.5, "text", std::string_view("text"), nullptr};
    test::CheckRecorder checks;
    for (const char* const tail : {"", "%d", "%%", "%"}) {
        for (int ch = 1; ch < 256; ++ch) {
            const std::string format = "%-5.2l" + std::string(1, static_cast<char>(ch)) + tail;
            for (const core::FormatArg& arg : args) {
                for (size_t count = 0; count < 3; ++count) {
                    const core::FormatArg pack[] = {arg, 1};
                    const core::FormatKind kinds[] = {arg.kind(), core::FormatKind::Int32};
                    std::string out;
                    core::formatTo(out, format.c_str(), pack, count);
                    const auto fault = core::detail::findFault(format.c_str(), kinds, count);
                    EXPECT_EQ(fault.what == core::detail::FormatFault::What::Nothing,
                              checks.take().empty())
                        << format << ' ' << count;
                }
            }
        }
    }
}

// A toolkit may switch the process to the user's locale; messages stay as they are.
TEST(FormatFloats, KeepThePointInEveryLocale) {
    const std::string before = std::setlocale(LC_NUMERIC, nullptr);
    if (std::setlocale(LC_NUMERIC, "de_DE.UTF-8") == nullptr &&
        std::setlocale(LC_NUMERIC, "German") == nullptr) // as Windows names it
        GTEST_SKIP() << "no locale with a decimal comma on this machine";
    const std::string text = format("%.1f %.1e %.1a", 1.5, 1.5, 1.5);
    std::setlocale(LC_NUMERIC, before.c_str());
    EXPECT_EQ(text, "1.5 1.5e+00 0x1.8p+0");
}

// As every failed check does when its handler says so.
TEST(FormatDeathTest, StopsByAFault) {
    const auto stop = [](const char*, const char*, int32_t, int32_t, const std::string&) {
        return true;
    };
    EXPECT_DEATH((core::detail::storeFailureHandler(stop), format(runtime("%d"), "x")), "");
}

} // namespace
