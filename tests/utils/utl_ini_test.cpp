// The reader and the writer of settings files.

#include "core_guniquebuf.h"
#include "core_varargs.h"
#include "temp_folder.h"
#include "testing_checkrecorder.h"
#include "testing_logrecorder.h"
#include "utl_inireader.h"
#include "utl_iniwriter.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

std::string duplicate(const std::string& path, const std::string& key, const std::string& section) {
    return core::format("WARN utl::IniReader::load(%s) - duplicate property '%s' in section '%s'",
                        path, key, section);
}

void expectContent(const utl::IniReader& reader, const std::vector<std::string>& properties) {
    EXPECT_EQ(reader.propertyCount(), properties.size());
    for (const std::string& property : properties) {
        std::istringstream parts(property);
        std::string section, key, value, found;
        std::getline(std::getline(std::getline(parts, section, '|'), key, '|'), value);
        EXPECT_TRUE(reader.hasSection(section)) << property;
        EXPECT_TRUE(reader.get(section, key, found)) << property;
        EXPECT_EQ(found, value) << property;
    }
}

std::string textOf(const utl::IniWriter& writer) {
    const core::GUniqueBuf buffer = writer.serialise();
    return {reinterpret_cast<const char*>(buffer.data()), buffer.size()};
}

/// A reader, the path of a file for it, and what is reported meanwhile.
class IniReader : public testing::Test {
protected:
    bool load(const std::string& content) {
        test::writeFile(d_path, content);
        return d_reader.load(d_path);
    }
    bool parse(const std::string& text) { return d_reader.parse(text.data(), text.size()); }
    bool isEmpty() const { return !d_reader.loaded() && d_reader.propertyCount() == 0; }

    test::TempFolder d_folder;
    const std::string d_path = d_folder / "Settings";
    test::CheckRecorder d_checks;
    test::LogRecorder d_log;
    utl::IniReader d_reader;
};
using IniWriter = IniReader; // with the reader to judge it

// A few of each kind; fuzz_inireader compares many more with the rules told plainly.
TEST_F(IniReader, ParsesLeniently) {
    const struct {
        std::string text;
        std::vector<std::string> properties; // all of them, each as "section|key|value"
        std::vector<std::string> repeated;   // keys, all of section "root"
    } rows[] = {
        {"", {}, {}},
        {"a=1\nb = 2\r\nc 3\r  ==d == =4= ", {"root|a|1", "root|b|2", "root|c|3", "root|d|4"}, {}},
        {"a\t1\nb\t c", {"root|b\t|c"}, {}},
        {"a = My Camera\nb = \"My Camera\"\n\"a key\" 1",
         {"root|a|My", "root|b|My Camera", "root|a key|1"},
         {}},
        {"k = \"\"\n\"\"=v", {"root|k|", "root||v"}, {}},
        {"# a 1\n;b 2\nc 3 # 4\nd 5;6\n e=7#\n#\n f# 8", {"root|c|3", "root|d|5", "root|e|7"}, {}},
        // Any quote hides comments until the next one, but only double quotes group.
        {"a = \"a#b\"\nc = 'd;e'\nx = it's # 1", {"root|a|a#b", "root|c|'d;e'", "root|x|it's"}, {}},
        {"[A]=5\nk 1\n [B] x y\nk 2\n\"[C D]\"\nk 3\n[[E]]\nk 4",
         {"A|k|1", "B|k|2", "C D|k|3", "[E]|k|4"},
         {}},
        {"[]\n[ NVR ]\n[A]x\n[A B]\n][ 1\n[ 2", {"root|[|NVR", "root|[A|B]", "root|][|1"}, {"["}},
        {{"\0k\xff=\x80\0\nn 1", 10}, {{"root|\0k\xff|\x80\0", 11}, "root|n|1"}, {}},
        {"a 1\nb 2\na 3\na 4\nb 5", {"root|a|1", "root|b|2"}, {"a", "a", "b"}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE("text: " + testing::PrintToString(row.text));
        EXPECT_TRUE(parse(row.text));
        EXPECT_TRUE(d_reader.loaded());
        expectContent(d_reader, row.properties);
        std::vector<std::string> lines;
        for (const std::string& key : row.repeated)
            lines.push_back(duplicate("", key, "root"));
        EXPECT_THAT(d_log.take(), ElementsAreArray(lines));
    }
}

TEST_F(IniReader, LoadsAFileByteForByteAndNamesWhatIsNotPlainText) {
    EXPECT_TRUE(load("[NVR]\r\nAddress=10.0.0.2\r\nAddress 3"));
    expectContent(d_reader, {"NVR|Address|10.0.0.2"});
    EXPECT_THAT(d_log.take(), ElementsAre(duplicate(d_path, "Address", "NVR")));
    EXPECT_TRUE(load("\r\n\r\n")) << "not empty, though without properties";
    EXPECT_TRUE(d_reader.loaded() && !d_reader.hasSection("NVR"));
    const std::string line = "WARN utl::IniReader::load(" + d_path + ") - ";
    for (const std::string mark : {"\xEF\xBB\xBF", "\xFF\xFE", "\xFE\xFF"}) {
        EXPECT_TRUE(load(mark + "[NVR]\nk v" + '\0'));
        expectContent(d_reader, {std::string("root|k|v") + '\0'});
        EXPECT_THAT(d_log.take(),
                    ElementsAre(line + "begins with a byte order mark", line + "holds NUL bytes"));
    }
}

TEST_F(IniReader, FailedLoadLeavesItEmpty) {
    test::writeFile(d_folder / "empty", "");
    for (const std::string& path : {d_folder / "missing", d_folder / "empty", d_folder.path()}) {
        EXPECT_THAT(d_log.take(), IsEmpty()) << "only the last is worth a line";
        ASSERT_TRUE(load("a 1"));
        EXPECT_FALSE(d_reader.load(path));
        EXPECT_TRUE(isEmpty());
        EXPECT_FALSE(d_reader.hasSection("root"));
    }
    EXPECT_THAT(d_log.take(), ElementsAre(testing::HasSubstr(d_folder.path())));
}

TEST_F(IniReader, KeepsACopyUntilTheNextText) {
    std::string value = "before";
    EXPECT_FALSE(d_reader.get("root", "a", value));
    std::string text = "[A]\na 1";
    ASSERT_TRUE(parse(text));
    text.assign(text.size(), '?');
    EXPECT_FALSE(d_reader.get("A", "b", value) || d_reader.get("B", "a", value));
    EXPECT_EQ(value, "before") << "is left alone";
    std::string key = "a";
    EXPECT_TRUE(d_reader.get("A", key, key)) << "the key's own text may receive the value";
    EXPECT_EQ(key, "1");
    ASSERT_TRUE(parse("[B]\n[C]\nc 2\n[D]\nd"));
    expectContent(d_reader, {"C|c|2"});
    EXPECT_FALSE(d_reader.hasSection("A") || d_reader.hasSection("B") || d_reader.hasSection("D"));
}

TEST_F(IniReader, RefusesMoreThanPositionsCanCount) {
    if constexpr (sizeof(size_t) > sizeof(uint32_t)) {
        ASSERT_TRUE(parse("a 1"));
        EXPECT_FALSE(d_reader.parse("a 1", size_t{1} << 32U));
        EXPECT_TRUE(isEmpty());
        EXPECT_THAT(d_log.take(),
                    ElementsAre("WARN utl::IniReader::parse - 4294967296 bytes are too many"));
    }
}

TEST_F(IniWriter, WritesWhatIsReadBackUnlessItCannotBe) {
    const std::string nothing = "(none)"; // no such key
    const struct {
        std::string value;
        std::string written;
        std::string readBack;
    } rows[] = {
        {"10.0.0.2", "10.0.0.2", "10.0.0.2"},
        {"My Camera", "\"My Camera\"", "My Camera"},
        {" x  ", " x  ", "x"},
        {" a  b ", "\" a  b \"", " a  b "},
        {"  ", "  ", nothing},
        {"", "", nothing},
        {"a\tb", "a\tb", "a\tb"},
        {"a # b", "\"a # b\"", "a # b"},
        {"a#b", "a#b", "a"}, // nothing is escaped
        {"a=b", "a=b", "a"},
        {"a \"b", "\"a \"b\"", "a \"b"},
        {"a\nb", "a\nb", "a"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.written);
        utl::IniWriter writer;
        writer.add("k", row.value);
        const std::string text = textOf(writer);
        EXPECT_EQ(text, "k " + row.written + "\n");
        EXPECT_TRUE(parse(text));
        std::string value = nothing;
        d_reader.get("root", "k", value);
        EXPECT_EQ(value, row.readBack);
    }
}

TEST_F(IniWriter, KeepsOrderAndRepetition) {
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

TEST_F(IniWriter, MovedFromAsserts) {
    utl::IniWriter writer;
    const utl::IniWriter taken = std::move(writer);
    writer.add("k", "v"); // NOLINT: the misuse that the assertion is for
    EXPECT_THAT(d_checks.take(), ElementsAre(test::FailedCheck{"!d_entries.empty()",
                                                               "utl_iniwriter.cpp", 26, 1, ""}));
    EXPECT_EQ(textOf(writer), "k v\n");
    EXPECT_THAT(textOf(taken), IsEmpty());
}

TEST_F(IniWriter, SavesOrReports) {
    utl::IniWriter writer;
    test::writeFile(d_path, "old");
    EXPECT_FALSE(writer.save(d_path)) << "nothing to write";
    EXPECT_EQ(test::readFile(d_path), "old");
    writer.add("k", "v");
    EXPECT_TRUE(writer.save(d_path));
    EXPECT_EQ(test::readFile(d_path), "k v\n");
    EXPECT_FALSE(writer.save(d_folder / "missing/Settings"));
    EXPECT_EQ(d_log.take().size(), 2U);
}

} // namespace
