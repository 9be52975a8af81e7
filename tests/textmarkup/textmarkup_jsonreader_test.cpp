#include "textmarkup_jsonreader.h"

#include "expect_traces.h"
#include "markup_traces.h"

#include <gtest/gtest.h>

namespace {

using textmarkup::Event;
using textmarkup::JsonReader;

TEST(JsonReader, ReadsValues) {
    const Traces rows = {
        {"\uFEFF\t[ ]\r\n", "[]"},
        {R"({"a":1,"":[true,false,null],"a":{"b":"c"}})", "{a:1,[true,false,null],a:{b:'c'}}"},
        {"-0.5e+10", "-0.5e+10"},
        {R"("\"\\\/\b\f\n\r\t\u00e9\uD83D\ude00 é/)"
         "\x7F\"",
         "'\"\\/\b\f\n\r\té\U0001F600 é/\x7F'"},
        {R"(["\ud83d","\ude00\ud83d","\ud83d\u0041","\ud83d\n"])",
         "['\uFFFD','\uFFFD\uFFFD','\uFFFDA','\uFFFD\n']"},
        {R"({"\u0061\n":0})", "{a\n:0}"},
    };
    expectTraces(test::traceJson, rows);
}

TEST(JsonReader, TellsWhereAndWhyItStops) {
    const Traces rows = {
        {" ", "line 1, column 2: a value is missing"},
        {"1\n 2", "line 2, column 2: something follows the value"},
        {"01", "line 1, column 2: something follows the value"},
        {"[1,]", "line 1, column 4: no value begins so"},
        {"[\"é\" 2]", "line 1, column 6: ',' or ']' is missing"},
        {"[", "line 1, column 2: a value is missing"},
        {"{1:2}", "line 1, column 2: a name in double quotes is missing"},
        {"{\"a\" 1}", "line 1, column 6: ':' is missing behind the name"},
        {"{\"a\":1]", "line 1, column 7: ',' or '}' is missing"},
        {"{\"a\":1,}", "line 1, column 8: a name in double quotes is missing"},
        {"[True]", "line 1, column 2: the word 'True' is not a value"},
        {"1.", "line 1, column 3: a digit is missing behind the point"},
        {"1e+", "line 1, column 4: a digit is missing in the exponent"},
        {"\"\n\"", "line 1, column 2: a string contains a control character"},
        {"\"a\\", "line 1, column 3: a backslash begins no escape"},
        {"\"\\u00g0\"", "line 1, column 2: a backslash begins no escape"},
        {"[\"abc", "line 1, column 2: a string does not end"},
        {"\"\xED\xA0\x80\"", "line 1, column 2: a byte is not part of UTF-8"},
        {"\xFF\xFE[",
         "line 1, column 1: the document is in UTF-16 or UTF-32, and only UTF-8 is read"},
    };
    expectTraces(test::traceJson, rows);
}

TEST(JsonReader, KeepsToItsLimits) {
    const textmarkup::Limits limits{.depth = 2, .text = 3};
    const Traces rows = {
        {R"([[],{"123":"123"},123])", "[[],{123:'123'},123]"},
        {"[[[]]]", "line 1, column 3: more than 2 levels are open"},
        {R"(["123\n"])", "line 1, column 2: a text is longer than 3 bytes"},
        {R"({"1234":1})", "line 1, column 2: a text is longer than 3 bytes"},
        {"1234", "line 1, column 1: a text is longer than 3 bytes"},
    };
    expectTraces(test::traceJson, rows, limits);
}

TEST(JsonReader, YieldsNumbers) {
    const struct {
        std::string text;
        std::optional<double> asDouble;
        std::optional<int64_t> asInt64;
    } rows[] = {
        {"-9223372036854775808", -9223372036854775808.0, INT64_MIN},
        {"9223372036854775808", 9223372036854775808.0, std::nullopt},
        {"0.1", 0.1, std::nullopt},
        {"1e2", 100.0, std::nullopt},
        {"4.9406564584124654e-324", 4.9406564584124654e-324, std::nullopt},
        {"1e309", std::nullopt, std::nullopt},
        {"-1e-400", std::nullopt, std::nullopt},
        {"-0", -0.0, 0},
    };
    for (const auto& [text, asDouble, asInt64] : rows) {
        JsonReader reader(text);
        ASSERT_EQ(reader.next(), Event::Number);
        EXPECT_EQ(reader.toDouble(), asDouble) << text;
        EXPECT_EQ(reader.toInt64(), asInt64) << text;
    }
}

TEST(JsonReader, SlicesTheDocumentAndSkipsParts) {
    const std::string document = R"({"a":[1,[{"b":2}]],"c":"text"})";
    JsonReader reader(document);
    EXPECT_EQ(reader.next(), Event::StartObject);
    EXPECT_EQ(reader.next(), Event::StartArray);
    EXPECT_EQ(reader.depth(), 2);
    EXPECT_TRUE(reader.skip());
    EXPECT_EQ(reader.next(), Event::String);
    EXPECT_EQ(reader.name(), "c");
    EXPECT_EQ(reader.offset(), document.find("\"c\""));
    EXPECT_EQ(reader.text().data(), document.data() + document.find("text"));
    EXPECT_EQ(reader.next(), Event::EndObject);
    EXPECT_EQ(reader.name(), "");
    EXPECT_EQ(reader.next(), Event::End);
    EXPECT_FALSE(reader.skip());
}

} // namespace
