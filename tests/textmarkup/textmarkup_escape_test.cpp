#include "textmarkup_escape.h"

#include <gtest/gtest.h>

namespace {

using textmarkup::escaped;

TEST(Escaped, ReplacesMarkupAndWhatXmlDoesNotAllow) {
    const std::pair<std::string, std::string> rows[] = {
        {"a &lt; <b> 'c' \"d\"", "a &amp;lt; &lt;b&gt; &apos;c&apos; &quot;d&quot;"},
        {"\t\r\n\x7F Größe 設定 \U0001F600", "\t\r\n\x7F Größe 設定 \U0001F600"},
        {std::string("\0\x1B", 2), "\uFFFD\uFFFD"},
        {"\uFFFD\uFFFE\uFFFF\uD7FF\uE000\U0010FFFF", "\uFFFD\uFFFD\uFFFD\uD7FF\uE000\U0010FFFF"},
        // Stray, overlong, surrogate, out of range, and cut off by the end or by other bytes.
        {"\x80_\xC0\x80_\xE0\x9F\xBF_", "\uFFFD_\uFFFD\uFFFD_\uFFFD\uFFFD\uFFFD_"},
        {"\xED\xA0\x80_\xF4\x90\x80\x80", "\uFFFD\uFFFD\uFFFD_\uFFFD\uFFFD\uFFFD\uFFFD"},
        {"\xFF\xE2\x82<\xF0\x9F", "\uFFFD\uFFFD\uFFFD&lt;\uFFFD\uFFFD"},
    };
    for (const auto& [text, expected] : rows)
        EXPECT_EQ(escaped(text), expected);
}

TEST(Escaped, CutsBetweenCharacters) {
    const std::pair<size_t, std::string> rows[] = {
        {9, "ab&amp;é"}, {8, "ab..."}, {5, "ab..."}, {4, "a..."}, {3, "..."}, {2, ""}, {0, ""},
    };
    for (const auto& [limit, expected] : rows)
        EXPECT_EQ(escaped("ab&é", limit), expected) << limit;
}

} // namespace
