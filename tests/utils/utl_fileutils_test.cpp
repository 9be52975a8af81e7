#include "utl_fileutils.h"

#include "check_recorder.h"
#include "log_recorder.h"
#include "temp_folder.h"

#include <cerrno>
#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <iterator>
#include <string>
#include <system_error>
#include <utility>

namespace {

using testing::ElementsAre;
using testing::EndsWith;
using testing::IsEmpty;
using testing::StartsWith;
using utl::FileUtils;

const std::string kNotUtf8 = "bad\xff";
const std::string kConversionFailed = "WARN fromUtf8 conversion failed";

std::string reason(int code) { return std::generic_category().message(code); }

/// A folder to work in, and what is reported meanwhile.
class FileUtilsTest : public testing::Test {
protected:
    bool isFolder(const std::string& path) {
        bool isDir = false;
        return FileUtils::exists(path, isDir) && isDir;
    }
    bool isFile(const std::string& path) {
        bool isDir = false;
        return FileUtils::exists(path, isDir) && !isDir;
    }
    size_t entries() const {
        using Iterator = std::filesystem::directory_iterator;
        return static_cast<size_t>(std::distance(Iterator(d_folder.path()), Iterator()));
    }
    void expectNotUtf8Lines(int count = 1) {
        EXPECT_THAT(d_log.take(),
                    testing::AllOf(testing::SizeIs(2 * count),
                                   testing::Contains(kConversionFailed).Times(count)));
    }

    test::TempFolder d_folder;
    test::CheckRecorder d_checks;
    test::LogRecorder d_log;
};

TEST_F(FileUtilsTest, ExistsTellsFoldersFromFiles) {
    const std::string file = d_folder / "file";
    test::writeFile(file, "");
    EXPECT_TRUE(isFolder(d_folder.path()));
    EXPECT_TRUE(isFile(file));
    EXPECT_TRUE(FileUtils::exists(file));

    bool isDir = true;
    EXPECT_FALSE(FileUtils::exists(d_folder / "missing", isDir));
    EXPECT_FALSE(isDir);
    EXPECT_FALSE(FileUtils::exists(file + "/inside"));
    EXPECT_FALSE(FileUtils::exists(""));
    EXPECT_THAT(d_log.take(), IsEmpty());
    EXPECT_THAT(d_checks.take(), IsEmpty());
}

TEST_F(FileUtilsTest, ExistsOverlooksOneTrailingBackslash) {
    test::writeFile(d_folder / "file", "");
    EXPECT_TRUE(isFolder(d_folder.path() + "\\"));
    EXPECT_TRUE(isFile(d_folder / "file" + "\\"));
    EXPECT_FALSE(FileUtils::exists(d_folder / "file" + "\\\\"));
    EXPECT_FALSE(FileUtils::exists("\\"));
}

TEST_F(FileUtilsTest, EitherSeparatorAndAnyCharacter) {
    const std::string name = "\xC3\xA4 \xE2\x82\xAC \xF0\x9F\x8E\xA5"; // a-umlaut, euro, camera
    ASSERT_TRUE(FileUtils::createPath(d_folder.path() + "\\" + name + "/sub"));
    EXPECT_TRUE(isFolder(d_folder.path() + "/" + name + "\\sub"));
    EXPECT_TRUE(std::filesystem::is_directory(std::filesystem::path(d_folder.path()) /
                                              std::filesystem::u8path(name) / "sub"));
}

TEST_F(FileUtilsTest, ExistsChecksThatPathIsUtf8) {
    bool isDir = true;
    for (const std::string& path : {kNotUtf8 + "\\", std::string("nul\0inside", 10)}) {
        EXPECT_FALSE(FileUtils::exists(path, isDir));
        EXPECT_FALSE(isDir);
        EXPECT_THAT(d_log.take(), ElementsAre(kConversionFailed));
        EXPECT_THAT(d_checks.take(), ElementsAre(test::FailedCheck{
                                         "CHECKF", "utl_fileutils_win32.cpp", 176, 0, path}));
    }
}

TEST_F(FileUtilsTest, CreateDirMakesOneLevel) {
    EXPECT_TRUE(FileUtils::createDir(d_folder / "new"));
    EXPECT_TRUE(isFolder(d_folder / "new"));
    EXPECT_THAT(d_log.take(), IsEmpty());

    EXPECT_FALSE(FileUtils::createDir(d_folder / "new"));
    EXPECT_FALSE(FileUtils::createDir(d_folder / "a/b"));
    EXPECT_THAT(
        d_log.take(),
        ElementsAre("WARN failed to create '" + d_folder / "new" + "' : " + reason(EEXIST),
                    "WARN failed to create '" + d_folder / "a/b" + "' : " + reason(ENOENT)));
    EXPECT_FALSE(FileUtils::createDir(kNotUtf8));
    expectNotUtf8Lines();
}

TEST_F(FileUtilsTest, CreateDirRemovesOneTrailingSlash) {
    EXPECT_TRUE(FileUtils::createDir(d_folder / "new/"));
    EXPECT_TRUE(isFolder(d_folder / "new"));
    EXPECT_FALSE(FileUtils::createDir(d_folder / "new/"));
    const std::string removing = "WARN removing trailing / from '" + d_folder / "new/" + "'";
    EXPECT_THAT(d_log.take(), ElementsAre(removing, removing,
                                          "WARN failed to create '" + d_folder / "new" +
                                              "' : " + reason(EEXIST)));
}

TEST_F(FileUtilsTest, CreatePathMakesWhatIsMissing) {
    EXPECT_TRUE(FileUtils::createPath(d_folder.path() + "\\a//b\\\\c/"));
    EXPECT_TRUE(isFolder(d_folder / "a/b/c"));
    EXPECT_TRUE(FileUtils::createPath(d_folder / "a/b/c/d"));
    EXPECT_TRUE(FileUtils::createPath(d_folder / "a/b/c/d"));
    EXPECT_TRUE(isFolder(d_folder / "a/b/c/d"));
    EXPECT_THAT(d_log.take(), IsEmpty());
}

TEST_F(FileUtilsTest, CreatePathEndsAtTheFirstFailure) {
    test::writeFile(d_folder / "a", "a file");
    EXPECT_FALSE(FileUtils::createPath(d_folder / "a"));
    EXPECT_FALSE(FileUtils::createPath(d_folder / "a/b/c"));
    const std::string failed = "WARN failed to create '" + d_folder / "a" + "' : " + reason(EEXIST);
    EXPECT_THAT(d_log.take(), ElementsAre(failed, failed));
}

TEST_F(FileUtilsTest, CreatePathTakesRootsAsGiven) {
    for (const char* root : {"", "/", "\\", "C:", "z:\\", "\\\\server\\share", "\\\\server\\"})
        EXPECT_TRUE(FileUtils::createPath(root)) << root;
    EXPECT_THAT(d_log.take(), IsEmpty());
}

TEST_F(FileUtilsTest, RenameMovesAndReplaces) {
    test::writeFile(d_folder / "from", "new");
    test::writeFile(d_folder / "to", "old");
    EXPECT_TRUE(FileUtils::renameFile(d_folder.path() + "\\from", d_folder / "to"));
    EXPECT_EQ(test::readFile(d_folder / "to"), "new");
    EXPECT_EQ(entries(), 1U);
    EXPECT_THAT(d_log.take(), IsEmpty());
}

TEST_F(FileUtilsTest, FailedRenameLeavesBoth) {
    const std::string from = d_folder / "from";
    const std::string to = d_folder / "to";
    ASSERT_TRUE(FileUtils::createDir(to));
    const auto failed = [&] { return StartsWith("WARN '" + from + "'=>'" + to + "' failed : "); };
    EXPECT_FALSE(FileUtils::renameFile(from, to)) << "nothing to rename";
    test::writeFile(from, "new");
    EXPECT_FALSE(FileUtils::renameFile(from, to)) << "a folder is not replaced";
    EXPECT_THAT(d_log.take(), ElementsAre(failed(), failed()));
    EXPECT_EQ(test::readFile(from), "new");
    EXPECT_TRUE(isFolder(to));

    EXPECT_FALSE(FileUtils::renameFile(from, kNotUtf8));
    EXPECT_FALSE(FileUtils::renameFile(kNotUtf8, to));
    expectNotUtf8Lines(2);
}

TEST_F(FileUtilsTest, TempFileIsNewAndEmpty) {
    const std::string umlaut = "\xC3\xA4"; // a character is never cut
    const std::pair<std::string, std::string> rows[] = {
        {"Settings", "Set"}, {"x", "x"}, {"", ""}, {umlaut + umlaut, umlaut}};
    for (const auto& [prefix, begin] : rows) {
        const std::string one = FileUtils::createTempFile(d_folder.path(), prefix);
        const std::string other = FileUtils::createTempFile(d_folder.path(), prefix);
        EXPECT_NE(one, other);
        for (const std::string& path : {one, other}) {
            EXPECT_THAT(path, StartsWith(d_folder / begin));
            EXPECT_THAT(path, EndsWith(".tmp"));
            EXPECT_TRUE(isFile(path)) << path;
            EXPECT_EQ(test::readFile(path), "");
        }
    }
    EXPECT_EQ(entries(), 2 * std::size(rows));
    EXPECT_THAT(d_log.take(), IsEmpty());
}

TEST_F(FileUtilsTest, TempFileKeepsTheFoldersSpelling) {
    ASSERT_TRUE(FileUtils::createDir(d_folder / "sub"));
    const std::string folder = d_folder.path() + "\\sub";
    EXPECT_THAT(FileUtils::createTempFile(folder, "abc"), StartsWith(folder + "\\abc"));
    EXPECT_THAT(FileUtils::createTempFile(folder + "\\", "abc"), StartsWith(folder + "\\abc"));
}

TEST_F(FileUtilsTest, FailedTempFileIsEmptyText) {
    const std::string missing = d_folder / "missing";
    const std::string failed = "WARN FileUtils::createTempFile - failed getting temp filename ";
    EXPECT_EQ(FileUtils::createTempFile(missing, "Settings"), "");
    EXPECT_EQ(FileUtils::createTempFile("", "Settings"), "");
    EXPECT_THAT(
        d_log.take(),
        ElementsAre(StartsWith(failed + "(path='" + missing + "', prefix='Settings', err='"),
                    failed + "(path='', prefix='Settings', err='" + reason(ENOENT) + "')"));
    EXPECT_EQ(FileUtils::createTempFile(d_folder.path(), kNotUtf8), "");
    EXPECT_EQ(FileUtils::createTempFile(d_folder / kNotUtf8, "abc"), "");
    expectNotUtf8Lines(2);
    EXPECT_EQ(entries(), 0U);
}

} // namespace
