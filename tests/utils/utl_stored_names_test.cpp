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
#include <utility>

// Files of every kind of name, through all that the tool does with its settings file.

namespace {

using testing::IsEmpty;
using testing::SizeIs;
using utl::File;
using utl::FileUtils;

TEST(StoredNames, AreMadeReadReplacedAndRemoved) {
    const std::pair<std::string, std::string> rows[] = {
        {" two  words", "a settings file"},
        {"Straße", "дверь"},
        {"摄像", "🔒🎥🔒"}, // beyond sixteen bits
        {"v1.2.3", "e=f,g;h'i`j%k#l@m!"},
        {std::string(60, 'd'), std::string(100, 'f')},
    };
    const test::TempFolder root;
    test::CheckRecorder checks;
    test::LogRecorder log;
    for (const auto& [name, file] : rows) {
        SCOPED_TRACE(name);
        const std::string folder = root.path() + "\\" + name + "\\sub";
        const std::string path = folder + "\\" + file;
        ASSERT_TRUE(FileUtils::createPath(folder));
        std::string content;
        for (const std::string text : {"first", "second one"}) {
            EXPECT_TRUE(File::createFromMemSafe(path, text.data(), text.size()));
            EXPECT_TRUE(File::loadIntoMem(path, content));
            EXPECT_EQ(content, text);
        }
        const auto there = test::systemPath(root / name) / "sub";
        EXPECT_TRUE(std::filesystem::exists(there / test::systemPath(file)));
        EXPECT_EQ(core::Wrapper::unlink(path), 0);
        EXPECT_FALSE(FileUtils::exists(path));
        EXPECT_TRUE(std::filesystem::is_empty(there)) << "a temporary file remains";
    }
    EXPECT_THAT(log.take(), IsEmpty());
    EXPECT_THAT(checks.take(), IsEmpty());
}

TEST(StoredNames, TooLongComponentsAreRefused) {
    const test::TempFolder root;
    test::LogRecorder log;
    const std::string folder = root / std::string(300, 'd');
    EXPECT_FALSE(FileUtils::exists(folder));
    EXPECT_FALSE(FileUtils::createPath(folder));
    EXPECT_FALSE(File::createFromMemSafe(folder + "\\Settings", "x", 1));
    EXPECT_THAT(log.take(), SizeIs(3)) << "one of the folder, two of the file";
    EXPECT_TRUE(std::filesystem::is_empty(root.path()));
}

} // namespace
