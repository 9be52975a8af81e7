#include "utl_inireader.h"

#include "check_recorder.h"
#include "core_varargs.h"
#include "log_recorder.h"
#include "temp_folder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

std::string duplicate(const std::string& path, const std::string& key, const std::string& section) {
    return core::format("WARN utl::IniReader::load(%s) - duplicate property '%s' in section '%s'",
                        path, key, section);
}

std::string joined(const std::string& section, const std::string& key, const std::string& value) {
    return core::format("%s|%s|%s", section, key, value);
}

void expectContent(const utl::IniReader& reader, const std::vector<std::string>& properties) {
    EXPECT_EQ(reader.propertyCount(), properties.size());
    for (const std::string& property : properties) {
        const std::string section = property.substr(0, property.find('|'));
        std::string key = property.substr(section.size() + 1);
        key.resize(key.find('|'));
        std::string value = "(none)";
        EXPECT_TRUE(reader.hasSection(section)) << property;
        EXPECT_TRUE(reader.get(section, key, value)) << property;
        EXPECT_EQ(joined(section, key, value), property);
    }
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

TEST_F(IniReader, ParsesLeniently) {
    const struct {
        std::string text;
        std::vector<std::string> properties; // all of them, each as "section|key|value"
        std::vector<std::string> repeated;   // keys, all of section "root"
    } rows[] = {
        {"", {}, {}},
        {"a=1\nb = 2\nc 3\n  ==d == =4= ", {"root|a|1", "root|b|2", "root|c|3", "root|d|4"}, {}},
        {"a 1\rb 2\r\nc 3\n\rd 4", {"root|a|1", "root|b|2", "root|c|3", "root|d|4"}, {}},
        {"a\t1\nb\t c", {"root|b\t|c"}, {}},
        {"a = My Camera\nb = \"My Camera\"\n\"a key\" 1",
         {"root|a|My", "root|b|My Camera", "root|a key|1"},
         {}},
        {"k = \"\"\n\"\"=v", {"root|k|", "root||v"}, {}},
        {"k\nk=\nk = # v\n= \n\"k v", {}, {}},
        {"a=\"x\"y b\nc=x\"y z\"", {"root|a|x\"y b", "root|c|x\"y"}, {}},
        {"a \"b = c\nd 1", {"root|a|b = c", "root|d|1"}, {}},
        {"# a 1\n;b 2\nc 3 # 4\nd 5;6\n e=7#\n#\n f# 8", {"root|c|3", "root|d|5", "root|e|7"}, {}},
        // Any quote hides comments until the next one, but only double quotes group.
        {"a = \"a#b\"\nc = 'd;e'\nx = it's # 1", {"root|a|a#b", "root|c|'d;e'", "root|x|it's"}, {}},
        {"x = \"a' # note\ny = \"a'#b", {"root|x|a' ", "root|y|a'"}, {}},
        {"[A]\na 1\n[B]\nb 2\n[A]\nc 3\n[root]\nd 4", {"A|a|1", "B|b|2", "A|c|3", "root|d|4"}, {}},
        {"[A]=5\nk 1\n [B] x y\nk 2\n\"[C D]\"\nk 3\n[[E]]\nk 4",
         {"A|k|1", "B|k|2", "C D|k|3", "[E]|k|4"},
         {}},
        {"[]\n[ NVR ]\n[A]x\n[A B]\n][ 1\n[ 2", {"root|[|NVR", "root|[A|B]", "root|][|1"}, {"["}},
        {"\xEF\xBB\xBF[NVR]\nk v", {"root|k|v"}, {}},
        {"k 1\nK 2\n[Root]\nk 3", {"root|k|1", "root|K|2", "Root|k|3"}, {}},
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

TEST_F(IniReader, LoadsAFileByteForByte) {
    EXPECT_TRUE(load("[NVR]\r\nAddress=10.0.0.2\r\nAddress 3"));
    expectContent(d_reader, {"NVR|Address|10.0.0.2"});
    EXPECT_THAT(d_log.take(), ElementsAre(duplicate(d_path, "Address", "NVR")));
    EXPECT_TRUE(load("\r\n\r\n")) << "not empty, though without properties";
    EXPECT_TRUE(d_reader.loaded());
    EXPECT_FALSE(d_reader.hasSection("NVR"));
}

TEST_F(IniReader, NamesAFileThatIsNotPlainText) {
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
    std::string text = "[A]\na 1";
    ASSERT_TRUE(parse(text));
    text.assign(text.size(), '?');
    expectContent(d_reader, {"A|a|1"});
    ASSERT_TRUE(parse("[B]\n[C]\nc 2\n[D]\nd"));
    expectContent(d_reader, {"C|c|2"});
    EXPECT_FALSE(d_reader.hasSection("A") || d_reader.hasSection("B") || d_reader.hasSection("D"));
}

TEST_F(IniReader, FailedGetChangesNothing) {
    std::string value = "before";
    EXPECT_FALSE(d_reader.get("root", "a", value));
    ASSERT_TRUE(parse("[A]\na 1"));
    EXPECT_FALSE(d_reader.get("A", "b", value));
    EXPECT_FALSE(d_reader.get("B", "a", value));
    EXPECT_EQ(value, "before");
    std::string key = "a";
    EXPECT_TRUE(d_reader.get("A", key, key)) << "the key's own text may receive the value";
    EXPECT_EQ(key, "1");
    EXPECT_THAT(d_checks.take(), IsEmpty());
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

} // namespace
