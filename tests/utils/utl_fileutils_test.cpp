#include "utl_fileutils.h"

#include "core_varargs.h"
#include "temp_folder.h"
#include "testing_logrecorder.h"
#include "testing_matchers.h"

#include <cerrno>
#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <set>
#include <string>
#include <system_error>
#include <thread>
#include <tuple>
#include <utility>

namespace {

using testing::ElementsAre;
using testing::EndsWith;
using testing::IsEmpty;
using testing::StartsWith;
using utl::FileUtils;

/// A folder to work in, and what is reported meanwhile.
class FileUtilsTest : public testing::Test {
protected:
    bool isFolder(const std::string& path) {
        bool isDir = false;
        return FileUtils::exists(path, isDir) && isDir;
    }
    std::string failedToCreate(const std::string& name, int code) const {
        return "WARN failed to create '" + d_folder / name +
               "' : " + std::generic_category().message(code);
    }

    test::TempFolder d_folder;
    test::LogRecorder d_log;
};

TEST_F(FileUtilsTest, ExistsTellsFoldersFromFiles) {
    const std::string file = d_folder / "file";
    test::writeFile(file, "");
    for (const char* const end : {"", "\\"}) { // one of these is overlooked
        EXPECT_TRUE(isFolder(d_folder.path() + end));
        EXPECT_TRUE(FileUtils::exists(file + end) && !isFolder(file + end));
    }
    for (const std::string& path : {d_folder / "missing", file + "/inside", file + "\\\\",
                                    std::string("\\"), std::string()}) {
        bool isDir = true;
        EXPECT_FALSE(FileUtils::exists(path, isDir)) << path;
        EXPECT_FALSE(isDir);
    }
    EXPECT_THAT(d_log.take(), IsEmpty());
}

TEST_F(FileUtilsTest, PathsMustBeUtf8) {
    const std::string converting = "WARN fromUtf8 conversion failed";
    for (const std::string& path : {std::string("bad\xff\\"), std::string("nul\0inside", 10)}) {
        bool isDir = true;
        EXPECT_THAT([&] { EXPECT_FALSE(FileUtils::exists(path, isDir)); },
                    test::FailsCheck({"utl_fileutils_win32.cpp", 176}, path));
        EXPECT_FALSE(isDir);
        EXPECT_THAT(d_log.take(), ElementsAre(converting));
    }
    const std::string bad = d_folder / "bad\xff";
    EXPECT_FALSE(FileUtils::createDir(bad) || FileUtils::renameFile(d_folder.path(), bad) ||
                 FileUtils::renameFile(bad, d_folder / "to"));
    EXPECT_EQ(FileUtils::createTempFile(d_folder.path(), "bad\xff"), "");
    EXPECT_EQ(FileUtils::createTempFile(bad, "abc"), "");
    EXPECT_THAT(d_log.take(),
                testing::AllOf(testing::SizeIs(10), testing::Contains(converting).Times(5)));
    EXPECT_THAT(d_folder.names(), IsEmpty());
}

TEST_F(FileUtilsTest, CreateDirMakesOneLevelAndCreatePathWhatIsMissing) {
    for (const char* root : {"", "/", "\\", "C:", "z:\\", "\\\\server\\share", "\\\\server\\"})
        EXPECT_TRUE(FileUtils::createPath(root)) << root << " is taken as given";
    EXPECT_TRUE(FileUtils::createPath(d_folder.path() + "\\a//b\\\\c/"));
    EXPECT_TRUE(FileUtils::createPath(d_folder / "a/b/c/d"));
    EXPECT_TRUE(isFolder(d_folder / "a/b/c/d"));
    EXPECT_THAT(d_log.take(), IsEmpty());
    test::writeFile(d_folder / "file", "");
    EXPECT_FALSE(FileUtils::createPath(d_folder / "file") ||
                 FileUtils::createPath(d_folder / "file/b/c")); // ends at the first failure
    EXPECT_TRUE(FileUtils::createDir(d_folder / "new/"));
    EXPECT_TRUE(isFolder(d_folder / "new"));
    EXPECT_FALSE(FileUtils::createDir(d_folder / "new"));
    EXPECT_FALSE(FileUtils::createDir(d_folder / "x/y"));
    EXPECT_THAT(d_log.take(),
                ElementsAre(failedToCreate("file", EEXIST), failedToCreate("file", EEXIST),
                            "WARN removing trailing / from '" + d_folder / "new/" + "'",
                            failedToCreate("new", EEXIST), failedToCreate("x/y", ENOENT)));
}

TEST_F(FileUtilsTest, CreatePathMayMeetAnother) {
    for (int round = 0; round < 30; ++round) {
        std::string path = d_folder / std::to_string(round);
        for (int level = 0; level < 10; ++level)
            path += "/d";
        std::thread other([&path] { EXPECT_TRUE(FileUtils::createPath(path)); });
        EXPECT_TRUE(FileUtils::createPath(path));
        other.join();
    }
    EXPECT_THAT(d_log.take(), IsEmpty());
}

TEST_F(FileUtilsTest, RenameReplacesOrLeavesBoth) {
    const std::string from = d_folder / "from";
    const std::string to = d_folder / "to";
    test::writeFile(from, "new");
    test::writeFile(to, "old");
    const std::string folder = d_folder / "folder";
    ASSERT_TRUE(FileUtils::createDir(folder));
    EXPECT_TRUE(FileUtils::renameFile(d_folder.path() + "\\from", to));
    EXPECT_FALSE(FileUtils::renameFile(from, to)) << "nothing to rename";
    EXPECT_FALSE(FileUtils::renameFile(to, folder)) << "a folder is not replaced";
    EXPECT_THAT(d_log.take(),
                ElementsAre(StartsWith("WARN '" + from + "'=>'" + to + "' failed : "),
                            StartsWith("WARN '" + to + "'=>'" + folder + "' failed : ")));
    EXPECT_EQ(test::readFile(to), "new");
    EXPECT_TRUE(isFolder(folder));
    EXPECT_THAT(d_folder.names(), ElementsAre("folder", "to"));
}

TEST_F(FileUtilsTest, TempFileIsNewAndEmpty) {
    const std::string umlaut = "\xC3\xA4";             // a character is never cut
    const std::string sub = d_folder.path() + "\\sub"; // whose spelling is kept
    ASSERT_TRUE(FileUtils::createDir(sub));
    const std::tuple<std::string, std::string, std::string> rows[] = {
        {d_folder.path(), "Settings", d_folder / "Set"},
        {d_folder.path(), "Settings", d_folder / "Set"},
        {d_folder.path(), umlaut + umlaut, d_folder / umlaut},
        {sub, "x", sub + "\\x"},
        {sub + "\\", "", sub + "\\"},
    };
    std::set<std::string> paths;
    for (const auto& [folder, prefix, begin] : rows) {
        const std::string path = FileUtils::createTempFile(folder, prefix);
        EXPECT_THAT(path, testing::AllOf(StartsWith(begin), EndsWith(".tmp")));
        EXPECT_TRUE(FileUtils::exists(path) && paths.insert(path).second) << path;
    }
    EXPECT_THAT(d_log.take(), IsEmpty());
}

TEST_F(FileUtilsTest, FailedTempFileIsEmptyText) {
    const std::string missing = d_folder / "missing";
    const std::tuple<std::string, std::string, std::string> rows[] = {
        {missing, "Settings", ""}, // in the system's own words
        {"", "Settings", std::generic_category().message(ENOENT) + "')"},
        {missing, "../x", std::generic_category().message(EINVAL) + "')"},
        {d_folder / "", "a\\b", std::generic_category().message(EINVAL) + "')"}};
    for (const auto& [folder, prefix, error] : rows) {
        EXPECT_EQ(FileUtils::createTempFile(folder, prefix), "");
        EXPECT_THAT(d_log.take(),
                    ElementsAre(StartsWith(core::format(
                        "WARN FileUtils::createTempFile - failed getting temp filename "
                        "(path='%s', prefix='%s', err='%s",
                        folder, prefix, error))));
    }
    EXPECT_THAT(d_folder.names(), IsEmpty());
}

} // namespace
