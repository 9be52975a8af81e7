// The reader and the writer of settings files.

#include "core_guniquebuf.h"
#include "temp_folder.h"
#include "testing_checkrecorder.h"
#include "testing_logrecorder.h"
#include "utl_inireader.h"
#include "utl_iniwriter.h"

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

/// A reader, the path of a file for it, and what is reported meanwhile.
class IniReader : public testing::Test {
protected:
    bool load(const std::string& content) {
        test::writeFile(d_path, content);
        return d_reader.load(d_path);
    }
    bool parse(const std::string& text) { return d_reader.parse(text.data(), text.size()); }
    std::string get(const std::string& section, const std::string& key) const {
        std::string value = "(none)";
        d_reader.get(section, key, value);
        return value;
    }

    test::TempFolder d_folder;
    const std::string d_path = d_folder / "Settings";
    test::LogRecorder d_log;
    utl::IniReader d_reader;
};
using IniWriter = IniReader; // with the reader to judge it

// fuzz_inireader compares much more with the rules told plainly.
TEST_F(IniReader, LoadsWhatPeopleWriteAndNamesWhatIsNotPlainText) {
    const std::string line = "WARN utl::IniReader::load(" + d_path + ") - ";
    EXPECT_TRUE(load("a 1 # one\n[NVR]\r\nAddress=10.0.0.2\r\nName = \"My Camera\" 2\nAddress 3"));
    EXPECT_EQ(get("root", "a") + get("NVR", "Address") + get("NVR", "Name"), "110.0.0.2My Camera");
    EXPECT_EQ(d_reader.propertyCount(), 3U);
    EXPECT_THAT(d_log.take(), ElementsAre(line + "duplicate property 'Address' in section 'NVR'"));
    EXPECT_TRUE(load("\r\n\r\n")) << "not empty, though without properties";
    EXPECT_TRUE(d_reader.loaded() && !d_reader.hasSection("NVR"));
    for (const std::string mark : {"\xEF\xBB\xBF", "\xFF\xFE", "\xFE\xFF"}) {
        EXPECT_TRUE(load(mark + "[NVR]\nk v" + '\0'));
        EXPECT_EQ(get("root", "k"), std::string("v") + '\0');
        EXPECT_THAT(d_log.take(),
                    ElementsAre(line + "begins with a byte order mark", line + "holds NUL bytes"));
    }
}

TEST_F(IniReader, FailedLoadLeavesItEmpty) {
    test::writeFile(d_folder / "empty", "");
    for (const std::string& path : {d_folder / "missing", d_folder / "empty", d_folder.path()}) {
        EXPECT_THAT(d_log.take(), IsEmpty()) << "only the last is worth a line";
        ASSERT_TRUE(load("a 1"));
        EXPECT_FALSE(d_reader.load(path) || d_reader.loaded() || d_reader.hasSection("root"));
    }
    EXPECT_THAT(d_log.take(), ElementsAre(testing::HasSubstr(d_folder.path())));
    if constexpr (sizeof(size_t) > sizeof(uint32_t)) { // positions count no further
        ASSERT_TRUE(parse("a 1"));
        EXPECT_FALSE(d_reader.parse("a 1", size_t{1} << 32U) || d_reader.loaded());
        EXPECT_THAT(d_log.take(),
                    ElementsAre("WARN utl::IniReader::parse - 4294967296 bytes are too many"));
    }
}

TEST_F(IniReader, KeepsACopyUntilTheNextText) {
    std::string text = "[A]\na 1";
    ASSERT_TRUE(parse(text));
    text.assign(text.size(), '?');
    std::string key = "a";
    EXPECT_TRUE(d_reader.get("A", key, key)) << "the key's own text may receive the value";
    EXPECT_EQ(key, "1");
    EXPECT_TRUE(parse("[B]") && !d_reader.hasSection("A"));
}

TEST_F(IniWriter, WritesWhatIsReadBackUnlessItCannotBe) {
    const struct {
        std::string value;
        std::string written;
        std::string readBack;
    } rows[] = {
        {"10.0.0.2", "10.0.0.2", "10.0.0.2"},
        {"My Camera", "\"My Camera\"", "My Camera"},
        {" x  ", " x  ", "x"},
        {" a  b ", "\" a  b \"", " a  b "},
        {"  ", "  ", "(none)"},
        {"", "", "(none)"},
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
        EXPECT_EQ(get("root", "k"), row.readBack);
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
    test::CheckRecorder checks;
    writer.add("k", "v"); // NOLINT: the misuse that the assertion is for
    EXPECT_THAT(checks.take(), ElementsAre(test::FailedCheck{"!d_entries.empty()",
                                                             "utl_iniwriter.cpp", 26, 1, ""}));
    EXPECT_EQ(textOf(writer) + textOf(taken), "k v\n");
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
