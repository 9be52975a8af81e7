#include "check_recorder.h"
#include "core_wrapper.h"
#include "log_recorder.h"
#include "temp_folder.h"
#include "utl_file.h"
#include "utl_fileutils.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

// Files of every kind of name, through all that the tool does with its settings file.

namespace {

using testing::IsEmpty;
using testing::SizeIs;
using utl::File;
using utl::FileUtils;

struct NameRow {
    int line;
    const char* name;
    std::string folder;
    std::string file;
};

const NameRow kNameRows[] = {
    {__LINE__, "Plain", "folder", "Settings"},
    {__LINE__, "Spaces", " two  words", "a settings file"},
    {__LINE__, "WesternEurope", "Straße", "Tür"},
    {__LINE__, "Cyrillic", "Камера", "дверь"},
    {__LINE__, "Chinese", "摄像", "机"},
    {__LINE__, "BeyondSixteenBits", "🎥", "🔒🎥🔒"},
    {__LINE__, "ManyDots", "v1.2.3", "a.b.c.d"},
    {__LINE__, "Punctuation", "a&b (c) [d]", "e=f,g;h'i`j%k#l@m!"},
    {__LINE__, "LongComponents", std::string(60, 'd'), std::string(100, 'f')},
};

class StoredNames : public testing::TestWithParam<NameRow> {
protected:
    test::TempFolder d_folder;
    test::CheckRecorder d_checks;
    test::LogRecorder d_log;
};

TEST_P(StoredNames, AreMadeReadReplacedAndRemoved) {
    SCOPED_TRACE("row at line " + std::to_string(GetParam().line));
    const std::string folder = d_folder.path() + "\\" + GetParam().folder + "\\sub";
    const std::string path = folder + "\\" + GetParam().file;
    ASSERT_TRUE(FileUtils::createPath(folder));
    std::string content;
    for (const std::string text : {"first", "second one"}) {
        EXPECT_TRUE(File::createFromMemSafe(path, text.data(), text.size()));
        EXPECT_TRUE(File::loadIntoMem(path, content));
        EXPECT_EQ(content, text);
    }
    const auto there = test::systemPath(d_folder / GetParam().folder) / "sub";
    EXPECT_TRUE(std::filesystem::exists(there / test::systemPath(GetParam().file)));
    EXPECT_EQ(core::Wrapper::unlink(path), 0);
    EXPECT_FALSE(FileUtils::exists(path));
    EXPECT_TRUE(std::filesystem::is_empty(there)) << "a temporary file remains";
    EXPECT_THAT(d_log.take(), IsEmpty());
    EXPECT_THAT(d_checks.take(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Kinds, StoredNames, testing::ValuesIn(kNameRows),
                         [](const auto& row) { return row.param.name; });

TEST_F(StoredNames, TooLongComponentsAreRefused) {
    const std::string folder = d_folder / std::string(300, 'd');
    EXPECT_FALSE(FileUtils::exists(folder));
    EXPECT_FALSE(FileUtils::createPath(folder));
    EXPECT_FALSE(File::createFromMemSafe(folder + "\\Settings", "x", 1));
    EXPECT_THAT(d_log.take(), SizeIs(3)) << "one of the folder, two of the file";
    EXPECT_TRUE(std::filesystem::is_empty(d_folder.path()));
}

} // namespace
