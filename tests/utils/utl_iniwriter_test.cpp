#include "utl_iniwriter.h"

#include "check_recorder.h"
#include "core_guniquebuf.h"
#include "log_recorder.h"
#include "temp_folder.h"
#include "utl_inireader.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <utility>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::string textOf(const utl::IniWriter& writer) {
    const core::GUniqueBuf buffer = writer.serialise();
    return {reinterpret_cast<const char*>(buffer.data()), buffer.size()};
}

struct Case {
    int line;
    const char* name;
    std::string value;
    std::string written;
    std::string readBack;
};

const std::string kNothing = "(none)"; // no such key

const Case kCases[] = {
    {__LINE__, "OneWord", "10.0.0.2", "10.0.0.2", "10.0.0.2"},
    {__LINE__, "SeveralWords", "My Camera", "\"My Camera\"", "My Camera"},
    {__LINE__, "OneWordWithBlanks", " x  ", " x  ", "x"},
    {__LINE__, "SeveralWordsWithBlanks", " a  b ", "\" a  b \"", " a  b "},
    {__LINE__, "BlanksOnly", "  ", "  ", kNothing},
    {__LINE__, "Empty", "", "", kNothing},
    {__LINE__, "TabIsNoBlank", "a\tb", "a\tb", "a\tb"},
    {__LINE__, "CommentMarkIsNotEscaped", "a#b", "a#b", "a"},
    {__LINE__, "CommentMarkAmongWords", "a # b", "\"a # b\"", "a # b"},
    {__LINE__, "EqualsIsNotEscaped", "a=b", "a=b", "a"},
    {__LINE__, "QuotesAreNotEscaped", "a \"b", "\"a \"b\"", "a \"b"},
    {__LINE__, "LineEndIsNotEscaped", "a\nb", "a\nb", "a"},
};

class IniWriterValue : public testing::TestWithParam<Case> {};

TEST_P(IniWriterValue, IsWrittenAndReadBack) {
    SCOPED_TRACE("row at line " + std::to_string(GetParam().line));
    utl::IniWriter writer;
    writer.add("k", GetParam().value);
    const std::string text = textOf(writer);
    EXPECT_EQ(text, "k " + GetParam().written + "\n");
    utl::IniReader reader;
    reader.parse(text.data(), text.size());
    std::string value = kNothing;
    reader.get("root", "k", value);
    EXPECT_EQ(value, GetParam().readBack);
}

INSTANTIATE_TEST_SUITE_P(Rows, IniWriterValue, testing::ValuesIn(kCases),
                         [](const auto& row) { return row.param.name; });

TEST(IniWriter, KeepsOrderAndRepetition) {
    utl::IniWriter writer;
    EXPECT_EQ(writer.serialise().capacity(), 0U);
    writer.addSection("NVR");
    writer.add("Address", "10.0.0.2");
    writer.add("Port", "81");
    writer.add("Port", "82");
    writer.addSection("");
    writer.add("still", "NVR");
    writer.addSection("A");
    writer.addSection("NVR");
    EXPECT_EQ(textOf(writer), "[NVR]\nAddress 10.0.0.2\nPort 81\nPort 82\nstill NVR\n"
                              "\n[A]\n\n[NVR]\n");
}

TEST(IniWriter, MovedFromAsserts) {
    test::CheckRecorder checks;
    utl::IniWriter writer;
    const utl::IniWriter taken = std::move(writer);
    writer.add("k", "v"); // NOLINT: the misuse that the assertion is for
    EXPECT_THAT(checks.take(), ElementsAre(test::FailedCheck{"!d_entries.empty()",
                                                             "utl_iniwriter.cpp", 26, 1, ""}));
    EXPECT_EQ(textOf(writer), "k v\n");
    EXPECT_THAT(textOf(taken), IsEmpty());
}

TEST(IniWriter, SavesOrReports) {
    const test::TempFolder folder;
    const std::string path = folder / "Settings";
    utl::IniWriter writer;
    test::writeFile(path, "old");
    EXPECT_FALSE(writer.save(path)) << "nothing to write";
    EXPECT_EQ(test::readFile(path), "old");
    writer.add("k", "v");
    EXPECT_TRUE(writer.save(path));
    EXPECT_EQ(test::readFile(path), "k v\n");

    test::LogRecorder log;
    EXPECT_FALSE(writer.save(folder / "missing/Settings"));
    EXPECT_EQ(log.take().size(), 2U);
}

} // namespace
