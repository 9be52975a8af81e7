#include "utl_file.h"

#include "core_guniquebuf.h"
#include "core_varargs.h"
#include "core_wrapper.h"
#include "internal/utl_file_system.h"
#include "temp_folder.h"
#include "testing_logrecorder.h"
#include "testing_matchers.h"
#include "utl_fileutils.h"

#include <algorithm>
#include <cerrno>
#include <deque>
#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>
#include <string>
#include <system_error>
#include <utility>

namespace {

using test::FailsCheck;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;
using utl::File;
using utl::FileUtils;

const std::string kBytes = std::string("a\r\nb\n\0\x1a\xff", 8); // all that text modes change

std::string reason(int code) { return std::generic_category().message(code); }

/// The system's file calls, except that transfers and flushes take scripted steps first: each
/// moves at most so many bytes or, when negative, fails with that errno.
struct ScriptedFiles final : File::System {
    mutable std::deque<int64_t> steps;
    int64_t sizeToTell = -1;
    mutable int opened = 0; // by name

    /// Takes a step, which lowers `count` or fails.
    bool allows(size_t& count) const {
        if (steps.empty())
            return true;
        const int64_t step = steps.front();
        steps.pop_front();
        if (step < 0)
            errno = static_cast<int>(-step);
        else
            count = std::min(count, static_cast<size_t>(step));
        return step >= 0;
    }
    int open(const std::string& path, int flags, int mode) const override {
        return ++opened, System::open(path, flags, mode);
    }
    int64_t size(int file) const override {
        return sizeToTell >= 0 ? sizeToTell : System::size(file);
    }
    int64_t read(int file, void* buffer, size_t count) const override {
        return allows(count) ? System::read(file, buffer, count) : -1;
    }
    int64_t write(int file, const void* data, size_t count) const override {
        return allows(count) ? System::write(file, data, count) : -1;
    }
    int flush(int file) const override {
        size_t nothing = 0;
        return allows(nothing) ? System::flush(file) : -1;
    }
};

/// A folder to work in, the path of a file in it, and what is reported meanwhile.
class FileTest : public testing::Test {
protected:
    std::string content() const { return test::readFile(d_path); }
    bool create(const std::string& content, int32_t flags = 0) const {
        return File::createFromMem(d_path, content.data(), content.size(), flags, File::kOwnerOnly,
                                   d_files);
    }
    bool load(std::string& buffer, uint64_t maxSize = File::kMaxLoadSize) const {
        return File::loadIntoMem(d_path, buffer, maxSize, d_files);
    }
    std::string failed(const std::string& call, int code) const {
        return "WARN File(" + d_path + "):" + call + " with error " + std::to_string(code) + ":" +
               reason(code);
    }
    std::string failedOpening(const std::string& path, int flags, int code) const {
        return "WARN File:openFile(" + path + "," + std::to_string(flags) +
               ",384) - failed opening : " + reason(code);
    }

    test::TempFolder d_folder;
    const std::string d_path = d_folder / "Settings";
    ScriptedFiles d_files;
    test::LogRecorder d_log;
};

TEST_F(FileTest, HonoursFlags) {
    constexpr const char* kNoFile = nullptr;
    const struct {
        const char* name;
        int32_t flags;
        const char* before;
        const char* after; // writing "+", if the flags allow it
        int error = 0;     // of opening
    } rows[] = {
        {"read", 1, "old", "old"},
        {"read a missing one", 1, kNoFile, "", ENOENT},
        {"write", 2, "old", "+ld"},
        {"write a missing one", 2, kNoFile, "", ENOENT},
        {"create", 2 + 4, kNoFile, "+"},
        {"create an existing one", 2 + 4, "old", "+ld"},
        {"truncate", 2 + 8, "old", "+"},
        {"truncate, but not write", 1 + 8, "old", "old", EINVAL},
        {"flush, but not write", 1 + 32, "old", "old"},
        {"exclusive", 2 + 4 + 16, kNoFile, "+"},
        {"exclusive, existing", 2 + 4 + 16, "old", "old", EEXIST},
        {"exclusive without create", 2 + 16, "old", "+ld"},
        {"append", 2 + 128, "old", "old+"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        std::filesystem::remove(d_path);
        if (row.before != kNoFile)
            test::writeFile(d_path, row.before);
        File file;
        EXPECT_EQ(file.openFile(d_path, row.flags), row.error == 0);
        EXPECT_EQ(file.isOpen(), row.error == 0);
        if (row.error != 0)
            EXPECT_THAT(d_log.take(), ElementsAre(failedOpening(d_path, row.flags, row.error)));
        else
            EXPECT_TRUE((row.flags & File::kWrite) == 0 || file.write("+", 1));
        EXPECT_TRUE(file.close());
        EXPECT_EQ(content(), row.after);
    }
    EXPECT_THAT(d_log.take(), IsEmpty());
}

TEST_F(FileTest, ReadsAndWritesWhereItStands) {
    File file;
    const auto open = [&file](const std::string& path, int32_t flags) {
        return [&file, path, flags] { EXPECT_FALSE(file.openFile(path, flags)); };
    };
    EXPECT_THAT(open(d_path, File::kCreate | File::kFlush),
                FailsCheck({"utl_file.cpp", 93}, "READ/WRITE not set (" + d_path + ")"));
    EXPECT_THAT(d_folder.names(), IsEmpty());
    ASSERT_TRUE(file.openFile(d_path, File::kRead | File::kWrite | File::kCreate));
    EXPECT_TRUE(file.write(kBytes.data(), kBytes.size()));
    EXPECT_TRUE(file.write(1, "XY", 2));
    EXPECT_THAT(
        open("other", File::kRead), // the first one stays open
        FailsCheck({"utl_file.cpp", 55}, "can't open 'other', '" + d_path + "' already open"));
    std::string buffer = "old";
    EXPECT_TRUE(file.readInto(buffer, 2));
    EXPECT_EQ(buffer, "b\n");
    EXPECT_EQ(file.position(), 5U);
    EXPECT_TRUE(file.readInto(buffer, 100));
    EXPECT_EQ(buffer, kBytes.substr(5));
    EXPECT_TRUE(file.readInto(buffer, 1) && buffer.empty()) << "the end is no failure";
}

TEST_F(FileTest, FailedTransferNamesTheReason) {
    test::writeFile(d_path, "abc");
    File file;
    ASSERT_TRUE(file.openFile(d_path, File::kRead));
    std::string buffer;
    ASSERT_TRUE(file.readInto(buffer, 2));
    EXPECT_FALSE(file.write("xyz", 3));
    ASSERT_TRUE(file.close());
    ASSERT_TRUE(file.openFile(d_path, File::kWrite));
    constexpr size_t kTooMuch = std::numeric_limits<size_t>::max(); // as text -1
    for (const size_t count : {kTooMuch, size_t{7}})
        EXPECT_FALSE(file.readInto(buffer, count) || !buffer.empty());
    EXPECT_FALSE(file.write(uint64_t{1} << 63U, "x", 1)) << "no such place";
    ASSERT_TRUE(file.close());
    uint64_t size = 0;
    EXPECT_FALSE(file.size(size));
    EXPECT_THAT(d_log.take(), ElementsAre(failed("write(2,3,2) - failed", EBADF),
                                          failed("readInto - failed reading -1 bytes", ENOMEM),
                                          failed("readInto - failed reading 7 bytes", EBADF),
                                          failed("write(9223372036854775808,1,0) - failed", EINVAL),
                                          failed("size - failed", EBADF)));
    EXPECT_EQ(content(), "abc");
}

TEST_F(FileTest, CreatesWholeFilesOrSaysWhatItWrote) {
    const std::string shortWrite =
        "WARN failed writing 8 bytes to " + d_path + " (only wrote 3 bytes)";
    const struct {
        std::deque<int64_t> steps;
        int32_t flags;
        size_t written;
        std::vector<std::string> lines;
    } rows[] = {
        {{1, -EINTR, 2, -EINTR}, File::kRead, 8, {}},
        {{3, 0}, 0, 3, {shortWrite}},
        {{3, -ENOSPC}, 0, 3, {failed("write(0,8,3) - failed", ENOSPC), shortWrite}},
        {{8, -EIO}, File::kFlush, 8, {failed("close - failed", EIO)}},
    };
    for (const auto& row : rows) {
        test::writeFile(d_path, "longer than that");
        d_files.steps = row.steps;
        EXPECT_EQ(create(kBytes, row.flags), row.lines.empty());
        EXPECT_THAT(d_log.take(), testing::ElementsAreArray(row.lines));
        EXPECT_EQ(content(), kBytes.substr(0, row.written));
    }
    const std::string missing = d_folder / "missing/Settings";
    EXPECT_FALSE(File::createFromMem(missing, "1", 1, File::kFlush, File::kOwnerOnly));
    EXPECT_THAT(d_log.take(), ElementsAre(failedOpening(missing, 2 + 4 + 8 + 32, ENOENT)));
}

TEST_F(FileTest, LoadsAWholeFileOrNothing) {
    const struct {
        int64_t size; // that the system tells
        std::deque<int64_t> steps;
        std::vector<std::string> lines;
    } rows[] = {
        {8, {-EINTR, 2, 1}, {}},
        {9, {}, {"WARN size (9) exceeds max_size (8) for file " + d_path}},
        {8, {2, -EIO}, {failed("readInto - failed reading 8 bytes", EIO)}},
        {8, {3, 0}, {"WARN got 3 instead of 8 for '" + d_path + "'"}},
    };
    test::writeFile(d_path, kBytes);
    std::string buffer = "old";
    for (const auto& row : rows) {
        d_files.sizeToTell = row.size;
        d_files.steps = row.steps;
        EXPECT_EQ(load(buffer, 8), row.lines.empty());
        EXPECT_EQ(buffer, row.lines.empty() ? kBytes : "");
        EXPECT_THAT(d_log.take(), testing::ElementsAreArray(row.lines));
    }
    std::filesystem::resize_file(d_path, File::kMaxLoadSize + 1);
    EXPECT_FALSE(File::loadIntoMem(d_path, buffer));
    EXPECT_FALSE(File::loadIntoMem("\xC0\x80", buffer)) << "not UTF-8";
    EXPECT_THAT(d_log.take(),
                ElementsAre("WARN size (67108865) exceeds max_size (67108864) for file " + d_path,
                            "WARN fromUtf8 conversion failed",
                            failedOpening("\xC0\x80", 1, EILSEQ)));
}

/// The safe store of "new" over a file that holds "old".
class SafeStore : public FileTest {
protected:
    SafeStore() { test::writeFile(d_path, "old"); }
    bool store(const std::string& path) { return File::createFromMemSafe(path, "new", 3, d_files); }

    static std::string warning(const std::string& path) {
        return "WARN utl::File::createFromMemSafe(" + path + ",3B,flags=0,mode=384) - failed ";
    }
};

TEST_F(SafeStore, ReplacesTheWholeFile) {
    EXPECT_TRUE(store(d_path));
    EXPECT_EQ(d_files.opened, 0) << "a name may have come to mean something else";
    EXPECT_EQ(content(), "new");
    EXPECT_TRUE(File::createFromMemSafe(d_path, core::GUniqueBuf(kBytes.data(), 8, 0, 0)));
    EXPECT_EQ(content(), kBytes);
    EXPECT_TRUE(File::createFromMemSafe(d_path, core::GUniqueBuf()));
    EXPECT_EQ(content(), "");
    const test::WorkingFolder folder;
    EXPECT_TRUE(store("Settings"));
    EXPECT_EQ(test::readFile(folder / "Settings"), "new");
    EXPECT_THAT(d_log.take(), IsEmpty());
}

TEST_F(SafeStore, FilesOfAnyNameAreMadeReadReplacedAndRemoved) {
    const std::pair<std::string, std::string> rows[] = {
        {"Straße дверь", "摄像🔒🎥🔒"}, // beyond sixteen bits
        {" v1.2.3", "e=f,g;h'i`j%k#l@m!"},
        {std::string(60, 'd'), std::string(100, 'f')},
    };
    for (const auto& [name, file] : rows) {
        SCOPED_TRACE(name);
        const std::string folder = core::format("%s\\%s\\sub", d_folder.path(), name);
        const std::string path = core::format("%s\\%s", folder, file);
        ASSERT_TRUE(FileUtils::createPath(folder));
        ASSERT_TRUE(File::createFromMemSafe(path, "longer", 6) && store(path));
        const auto there = test::systemPath(d_folder / name) / "sub";
        EXPECT_EQ(test::readFile(test::utf8Path(there / test::systemPath(file))), "new");
        std::string content;
        EXPECT_TRUE(File::loadIntoMem(path, content) && content == "new") << content;
        EXPECT_EQ(core::Wrapper::unlink(path), 0);
        EXPECT_TRUE(std::filesystem::is_empty(there)) << "a temporary file remains";
    }
    EXPECT_THAT(d_log.take(), IsEmpty());
    const std::string tooLong = d_folder / std::string(300, 'd');
    EXPECT_FALSE(FileUtils::exists(tooLong) || FileUtils::createPath(tooLong) ||
                 store(tooLong + "\\Settings"));
    EXPECT_THAT(d_log.take(), testing::SizeIs(3)) << "one of the folder, two of the file";
}

TEST_F(SafeStore, NeedsAFileName) {
    for (const std::string& path : {std::string(), d_folder.path() + "/", d_folder.path() + "\\"})
        EXPECT_THAT([&] { EXPECT_FALSE(store(path)); }, FailsCheck({"utl_file.cpp", 890}, ""));
}

TEST_F(SafeStore, FailureIsTwoLinesAndLeavesTheOldFile) {
    const std::pair<std::string, std::string> rows[] = {
        {d_folder / "missing", "\\"}, {"\\", ""}, {"/", ""}, {"C:\\", ""}};
    for (const auto& [folder, separator] : rows) { // roots keep theirs
        EXPECT_FALSE(store(folder + separator + "\xff")) << "no file system is asked";
        EXPECT_THAT(d_log.take(),
                    testing::Contains("WARN File::createFromMemSafe - failed creating temp file "
                                      "(path=" +
                                      folder + ", prefix=\xff)"));
    }
    const std::string target = d_folder / "folder";
    std::filesystem::create_directory(target);
    EXPECT_FALSE(store(target));
    const std::string temporary = d_folder / "fol";
    EXPECT_THAT(
        d_log.take(),
        ElementsAre(StartsWith("WARN '" + temporary),
                    StartsWith(warning(target) + "renaming file from temporary '" + temporary)));
    EXPECT_THAT(d_folder.names(), ElementsAre("Settings", "folder"));

    d_files.steps = {1, -ENOSPC};
    EXPECT_FALSE(store(d_path));
    d_files.steps = {3, -EIO};
    EXPECT_FALSE(store(d_path));
    const auto failed = StartsWith(warning(d_path) + "creating temp file '" + (d_folder / "Set"));
    EXPECT_THAT(d_log.take(), ElementsAre(testing::HasSubstr(":write(0,3,1) - "),
                                          testing::HasSubstr("(only wrote 1 bytes)"), failed,
                                          testing::HasSubstr(":close - "), failed));
    EXPECT_EQ(content(), "old");
    EXPECT_THAT(d_folder.names(), testing::SizeIs(4))
        << "both temporary files are left for inspection";
}

} // namespace
