#include "utl_inireader.h"

#include "check_recorder.h"
#include "core_tokenizer.h"
#include "core_varargs.h"
#include "log_recorder.h"
#include "temp_folder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <map>
#include <random>
#include <string>
#include <string_view>
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
    for (const char* name : {"A", "B", "D", "root"})
        EXPECT_FALSE(d_reader.hasSection(name)) << name;
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

TEST_F(IniReader, FindsEachOfMany) {
    constexpr int kSections = 300;
    constexpr int kCount = 30000;
    std::vector<std::string> properties;
    std::string text;
    for (int i = 0; i < kCount; ++i) { // neighbours are in different sections
        const std::string section = "s" + std::to_string(i % kSections);
        const std::string key = "k" + std::to_string(i / kSections);
        text += core::format("[%s]\n%s %d\n", section, key, i);
        properties.push_back(joined(section, key, std::to_string(i)));
    }
    ASSERT_TRUE(parse(text));
    expectContent(d_reader, properties);
    EXPECT_FALSE(d_reader.hasProperty("s0", "k" + std::to_string(kCount / kSections)));
}

// What the reader does in one pass over slices, told by the rules one by one.
struct PlainReader {
    std::map<std::pair<std::string, std::string>, std::string> values; // by section and key
    std::map<std::string, bool> sections = {{"root", false}};          // whether it has any
    std::vector<std::string> repeated;                                 // log lines

    explicit PlainReader(std::string_view text) {
        core::Tokenizer lines(text, {.delimiters = core::CharSet("\n\r")});
        std::string current = "root";
        for (std::string_view line; lines.next(line);) {
            std::vector<std::string> words;
            core::Tokenizer tokens(line.substr(0, commentStart(line)),
                                   {.delimiters = core::CharSet("= "), .quote = '"'});
            for (std::string_view word; tokens.next(word);)
                words.emplace_back(word);
            const std::string first = words.empty() ? "" : words.front();
            if (first.size() > 2 && first.front() == '[' && first.back() == ']')
                sections.emplace(current = first.substr(1, first.size() - 2), false);
            else if (words.size() >= 2)
                add(current, first, words[1]);
        }
    }

    void add(const std::string& section, const std::string& key, const std::string& value) {
        sections[section] = true;
        if (!values.emplace(std::pair(section, key), value).second)
            repeated.push_back(duplicate("", key, section));
    }

    static size_t commentStart(std::string_view line) {
        bool quoted = false;
        for (size_t i = 0; i < line.size(); ++i) {
            if (line[i] == '"' || line[i] == '\'')
                quoted = !quoted;
            else if (!quoted && (line[i] == '#' || line[i] == ';'))
                return i;
        }
        return line.size();
    }
};

TEST_F(IniReader, AgreesWithPlainReadingOfRandomTexts) {
    constexpr std::string_view kBytes = "ab[]=== \"\"'#;\n\n\r\t";
    std::mt19937 random(20240229); // NOLINT(*-msc51-cpp): each run reads the same texts
    size_t total = 0;
    for (int round = 0; round < 20000 && !HasFailure(); ++round) {
        std::string text(random() % 100, '\0');
        for (char& ch : text)
            ch = kBytes[random() % kBytes.size()];
        SCOPED_TRACE("text: " + testing::PrintToString(text));
        const PlainReader plain(text);
        std::vector<std::string> properties;
        for (const auto& [name, value] : plain.values)
            properties.push_back(joined(name.first, name.second, value));
        ASSERT_TRUE(parse(text));
        expectContent(d_reader, properties);
        for (const auto& [name, hasProperties] : plain.sections)
            EXPECT_EQ(d_reader.hasSection(name), hasProperties) << name;
        EXPECT_THAT(d_log.take(), ElementsAreArray(plain.repeated));
        total += properties.size();
    }
    EXPECT_GT(total, 20000U) << "the texts have too little in them to prove anything";
}

} // namespace
