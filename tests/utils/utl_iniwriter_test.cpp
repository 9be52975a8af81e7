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

TEST(IniWriter, WritesWhatIsReadBackUnlessItCannotBe) {
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
        utl::IniReader reader;
        reader.parse(text.data(), text.size());
        std::string value = nothing;
        reader.get("root", "k", value);
        EXPECT_EQ(value, row.readBack);
    }
}

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
