#include "core_utf.h"

#include <gtest/gtest.h>

using namespace std::string_literals;

namespace {

TEST(Utf8, SurvivesTheWayToTheSystemAndBack) {
    for (const std::string& text :
         {""s, "a\0b"s, "\x7F"s, "\xC2\x80 \xDF\xBF"s, "\xE0\xA0\x80 \xEF\xBF\xBF"s,
          "\xED\x9F\xBF \xEE\x80\x80"s, // around the surrogates
          "\xF0\x90\x80\x80 \xF4\x8F\xBF\xBF"s, "Zürich Ωμέγα 設定 🙂"s}) {
        EXPECT_TRUE(core::isValidUtf8(text));
        core::SystemText system;
        std::string back = "old";
        EXPECT_TRUE(core::fromUtf8(text, system));
        EXPECT_TRUE(core::toUtf8(system, back));
        EXPECT_EQ(back, text);
    }
}

TEST(Utf8, MalformedTextIsRefusedAndChangesNothing) {
    // Continuation bytes alone, overlong forms, surrogates, above the last code point, and
    // sequences with a byte missing or wrong.
    const char* const malformed[] = {
        "\x80",         "\xC0\x80",     "\xC1\xBF",         "\xE0\x9F\xBF",     "\xF0\x8F\xBF\xBF",
        "\xED\xA0\x80", "\xED\xBF\xBF", "\xF4\x90\x80\x80", "\xF5\x80\x80\x80", "\xFF",
        "\xC3",         "\xE2\x82",     "\xF0\x9F\x99",     "\xE2\x82\x41",     "\xF0\x9F\x99\xC2"};
    for (const std::string bad : malformed) {
        const std::string text = "abc" + bad + "def";
        EXPECT_FALSE(core::isValidUtf8(text)) << testing::PrintToString(text);
        core::SystemText system(1, 'x');
        EXPECT_FALSE(core::fromUtf8(bad, system) || core::fromUtf8(text, system));
        EXPECT_FALSE(core::pathFromUtf8(text, system));
        EXPECT_EQ(system, core::SystemText(1, 'x'));
    }
}

TEST(PathFromUtf8, RefusesWhatTheSystemWouldCut) {
    core::SystemText system;
    EXPECT_FALSE(core::pathFromUtf8("settings\0.bak"s, system));
}

} // namespace
