#include "core_tokenizer.h"

#include <gmock/gmock.h>
#include <string>
#include <vector>

namespace {

using core::CharSet;

constexpr core::Tokenizer::Rules kWords{CharSet(" =")};
constexpr core::Tokenizer::Rules kQuoted{CharSet(" ="), '"'};
constexpr core::Tokenizer::Rules kFields{.delimiters = CharSet("-"), .skipEmpty = false};
constexpr core::Tokenizer::Rules kQuoteIsDelimiter{CharSet("\""), '"'};

const struct {
    const char* name;
    std::string_view text;
    core::Tokenizer::Rules rules;
    std::vector<std::string> tokens;
} kCases[] = {
    {"Words", " a=bc  \"d ", kWords, {"a", "bc", "\"d"}},
    {"HighAndNulBytes", {"\xff\0 \x80", 4}, kWords, {{"\xff\0", 2}, "\x80"}},
    {"QuoteClosesOnlyBeforeDelimiter", "\"a b\"c d\" \"e f", kQuoted, {"a b\"c d", "e f"}},
    {"DoubledQuote", "\"a\"\" b", kQuoted, {"a\"", "b"}},
    {"QuoteInsideUnquoted", "a=\"x\"y b\"c d\"", kQuoted, {"a", "x\"y b\"c d"}},
    {"EmptyGroupIsAToken", "k = \"\" z", kQuoted, {"k", "", "z"}},
    {"LoneQuoteAtEnd", "a \"", kQuoted, {"a"}},
    {"EmptyFieldsKept", "2024-01--1-", kFields, {"2024", "01", "", "1", ""}},
    {"DelimiterWinsOverQuote", "a\"b", kQuoteIsDelimiter, {"a", "b"}},
};

TEST(Tokenizer, Splits) {
    for (const auto& row : kCases) {
        SCOPED_TRACE(row.name);
        core::Tokenizer tokenizer(row.text, row.rules);
        std::vector<std::string> tokens;
        std::string_view token = "untouched";
        while (tokenizer.next(token))
            tokens.emplace_back(token);
        EXPECT_EQ(tokens, row.tokens);

        const std::string_view last = token;
        EXPECT_FALSE(tokenizer.next(token)) << "must stay at the end";
        EXPECT_EQ(token, last);
    }
}

} // namespace
