#include "core_tokenizer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <string_view>
#include <vector>

namespace {

using testing::ElementsAreArray;

struct Case {
    int line;
    const char* name;
    std::string_view text;
    core::Tokenizer::Rules rules;
    std::vector<std::string> tokens;
};

constexpr core::Tokenizer::Rules kWords{.delimiters = core::CharSet(" =")};
constexpr core::Tokenizer::Rules kQuoted{.delimiters = core::CharSet(" ="), .quote = '"'};
constexpr core::Tokenizer::Rules kFields{.delimiters = core::CharSet("-"), .skipEmpty = false};
constexpr core::Tokenizer::Rules kQuotedFields{
    .delimiters = core::CharSet(","), .quote = '"', .skipEmpty = false};
constexpr core::Tokenizer::Rules kQuoteIsDelimiter{.delimiters = core::CharSet("\""), .quote = '"'};

const Case kCases[] = {
    {__LINE__, "Empty", "", kWords, {}},
    {__LINE__, "DelimitersOnly", " = =", kWords, {}},
    {__LINE__, "Words", "a=bc  d ", kWords, {"a", "bc", "d"}},
    {__LINE__, "HighAndNulBytes", {"\xff\0 \x80", 4}, kWords, {{"\xff\0", 2}, "\x80"}},
    {__LINE__, "QuoteUnknownToRules", "\"a b\"", kWords, {"\"a", "b\""}},
    {__LINE__, "Grouped", "\"a = b\" c", kQuoted, {"a = b", "c"}},
    {__LINE__, "QuoteClosesOnlyBeforeDelimiter", "\"a b\"c d\" e", kQuoted, {"a b\"c d", "e"}},
    {__LINE__, "DoubledQuote", "\"a\"\" b", kQuoted, {"a\"", "b"}},
    {__LINE__, "QuoteInsideUnquoted", "a=\"x\"y b\"c d\"", kQuoted, {"a", "x\"y b\"c d"}},
    {__LINE__, "QuoteInsideUnquotedKept", "it\"s b\"", kQuoted, {"it\"s", "b\""}},
    {__LINE__, "EmptyGroupIsAToken", "k = \"\" z", kQuoted, {"k", "", "z"}},
    {__LINE__, "EmptyGroupAtEnd", "\"\"", kQuoted, {""}},
    {__LINE__, "UnterminatedRunsToEnd", "a \"b = c", kQuoted, {"a", "b = c"}},
    {__LINE__, "LoneQuoteAtEnd", "a \"", kQuoted, {"a"}},
    {__LINE__, "EmptyFieldsKept", "2024-01--1-", kFields, {"2024", "01", "", "1", ""}},
    {__LINE__, "EmptyTextIsOneField", "", kFields, {""}},
    {__LINE__, "LoneQuoteIsEmptyField", "a,\"", kQuotedFields, {"a", ""}},
    {__LINE__, "DelimiterRightAfterQuote", "\",\",b", kQuotedFields, {",", "b"}},
    {__LINE__, "DelimiterWinsOverQuote", "a\"b", kQuoteIsDelimiter, {"a", "b"}},
};

class Tokenizer : public testing::TestWithParam<Case> {};

TEST_P(Tokenizer, Splits) {
    SCOPED_TRACE("row at line " + std::to_string(GetParam().line));
    core::Tokenizer tokenizer(GetParam().text, GetParam().rules);
    std::vector<std::string> tokens;
    std::string_view token = "untouched";
    while (tokenizer.next(token))
        tokens.emplace_back(token);
    EXPECT_THAT(tokens, ElementsAreArray(GetParam().tokens));

    const std::string_view last = token;
    EXPECT_FALSE(tokenizer.next(token)) << "must stay at the end";
    EXPECT_EQ(token, last);
}

INSTANTIATE_TEST_SUITE_P(Rules, Tokenizer, testing::ValuesIn(kCases),
                         [](const auto& row) { return row.param.name; });

} // namespace
