#include "utl_file.h"

#include "check_recorder.h"
#include "core_guniquebuf.h"
#include "core_varargs.h"
#include "core_wrapper.h"
#include "internal/utl_file_system.h"
#include "log_recorder.h"
#include "temp_folder.h"
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

using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;
using utl::File;
using utl::FileUtils;

const std::string kBytes = std::string("a\r\nb\n\0\x1a\xff", 8); // all that text modes change

std::string reason(int code) { return std::generic_category().message(code); }

/// The system's file calls, except that scripted results come first: each step moves
/// at most so many bytes or, when negative, fails with that errno.
struct ScriptedFiles final : File::System {
    using Script = std::deque<int64_t>;
    mutable Script reads;
    mutable Script writes;
    mutable Script flushes;
    int64_t sizeToTell = -1;
    mutable std::vector<std::string> opened; // by name

    /// Takes a step, which lowers `count` or fails.
    static bool allows(Script& script, size_t& count) {
        if (script.empty())
            return true;
        const int64_t step = script.front();
        script.pop_front();
        if (step < 0)
            errno = static_cast<int>(-step);
        else
            count = std::min(count, static_cast<size_t>(step));
        return step >= 0;
    }
    int open(const std::string& path, int flags, int mode) const override {
        opened.push_back(path);
        return System::open(path, flags, mode);
    }
    int64_t size(int file) const override {
        return sizeToTell >= 0 ? sizeToTell : System::size(file);
    }
    int64_t read(int file, void* buffer, size_t count) const override {
        return allows(reads, count) ? System::read(file, buffer, count) : -1;
    }
    int64_t write(int file, const void* data, size_t count) const override {
        return allows(writes, count) ? System::write(file, data, count) : -1;
    }
    int flush(int file) const override {
        size_t nothing = 0;
        return allows(flushes, nothing) ? System::flush(file) : -1;
    }
};

/// A folder to work in, the path of a file in it, and what is reported meanwhile.
class FileTest : public testing::Test {
protected:
    std::string content() const { return test::readFile(d_path); }
    bool load(std::string& buffer) const {
        return File::loadIntoMem(d_path, buffer, File::kMaxLoadSize, d_files);
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
    test::CheckRecorder d_checks;
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

TEST_F(FileTest, ChecksHowItIsOpened) {
    const auto check = [](int line, const std::string& message) {
        return test::FailedCheck{"CHECKF", "utl_file.cpp", line, 0, message};
    };
    File file;
    EXPECT_FALSE(file.openFile(d_path, File::kCreate | File::kFlush));
    EXPECT_THAT(d_checks.take(), ElementsAre(check(93, "READ/WRITE not set (" + d_path + ")")));
    EXPECT_THAT(d_folder.names(), IsEmpty());

    test::writeFile(d_path, "first");
    ASSERT_TRUE(file.openFile(d_path, File::kRead));
    std::string buffer;
    EXPECT_TRUE(file.readInto(buffer, 2));
    EXPECT_FALSE(file.openFile("other", File::kRead));
    EXPECT_THAT(d_checks.take(),
                ElementsAre(check(55, "can't open 'other', '" + d_path + "' already open")));
    EXPECT_TRUE(file.readInto(buffer, 3)) << "the first file is still open";
    EXPECT_EQ(buffer, "rst");
    EXPECT_TRUE(file.close());
    EXPECT_TRUE(file.close()) << "nothing left to close";
}

TEST_F(FileTest, ReadsAndWritesWhereItStands) {
    File file;
    ASSERT_TRUE(file.openFile(d_path, File::kRead | File::kWrite | File::kCreate));
    EXPECT_TRUE(file.write(kBytes.data(), kBytes.size()));
    EXPECT_TRUE(file.write(1, "XY", 2));
    EXPECT_EQ(file.position(), 3U);
    std::string buffer = "old";
    EXPECT_TRUE(file.readInto(buffer, 2));
    EXPECT_EQ(buffer, "b\n");
    EXPECT_TRUE(file.readInto(buffer, 100));
    EXPECT_EQ(buffer, kBytes.substr(5));
    EXPECT_EQ(file.position(), kBytes.size());
    EXPECT_TRUE(file.readInto(buffer, 1)) << "the end is no failure";
    EXPECT_EQ(buffer, "");
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
    for (const size_t count : {size_t{7}, kTooMuch}) {
        EXPECT_FALSE(file.readInto(buffer, count));
        EXPECT_EQ(buffer, "");
    }
    EXPECT_FALSE(file.write(uint64_t{1} << 63U, "x", 1)) << "no such place";
    ASSERT_TRUE(file.close());
    uint64_t size = 0;
    EXPECT_FALSE(file.size(size));
    EXPECT_THAT(d_log.take(), ElementsAre(failed("write(2,3,2) - failed", EBADF),
                                          failed("readInto - failed reading 7 bytes", EBADF),
                                          failed("readInto - failed reading -1 bytes", ENOMEM),
                                          failed("write(9223372036854775808,1,0) - failed", EINVAL),
                                          failed("size - failed", EBADF)));
    EXPECT_EQ(content(), "abc");
}

TEST_F(FileTest, GoesOnUntilAllIsMovedOrFails) {
    const std::string shortWrite =
        "WARN failed writing 8 bytes to " + d_path + " (only wrote 3 bytes)";
    const std::pair<ScriptedFiles::Script, std::vector<std::string>> rows[] = {
        {{1, -EINTR, 2, -EINTR}, {}},
        {{3, 0}, {shortWrite}},
        {{3, -ENOSPC}, {failed("write(0,8,3) - failed", ENOSPC), shortWrite}},
    };
    for (const auto& [writes, lines] : rows) {
        d_files.writes = writes;
        const bool all =
            File::createFromMem(d_path, kBytes.data(), 8, 0, File::kOwnerOnly, d_files);
        EXPECT_EQ(all, lines.empty());
        EXPECT_THAT(d_log.take(), testing::ElementsAreArray(lines));
        d_files.reads = {-EINTR, 2, 1};
        std::string buffer;
        EXPECT_TRUE(load(buffer));
        EXPECT_EQ(buffer, kBytes.substr(0, all ? 8 : 3));
    }
}

TEST_F(FileTest, CreatesTruncatesAndFlushesOnRequest) {
    d_files.flushes = {-EIO};
    EXPECT_TRUE(File::createFromMem(d_path, "longer", 6, File::kRead, File::kOwnerOnly, d_files));
    EXPECT_FALSE(File::createFromMem(d_path, "2", 1, File::kFlush, File::kOwnerOnly, d_files));
    EXPECT_EQ(content(), "2");
    const std::string missing = d_folder / "missing/Settings";
    EXPECT_FALSE(File::createFromMem(missing, "1", 1, File::kFlush, File::kOwnerOnly));
    EXPECT_THAT(d_log.take(), ElementsAre(failed("close - failed", EIO),
                                          failedOpening(missing, 2 + 4 + 8 + 32, ENOENT)));
}

TEST_F(FileTest, LoadsUpToALimit) {
    test::writeFile(d_path, kBytes);
    std::string buffer = "old";
    EXPECT_TRUE(File::loadIntoMem(d_path, buffer, kBytes.size()));
    EXPECT_EQ(buffer, kBytes);
    EXPECT_FALSE(File::loadIntoMem(d_path, buffer, kBytes.size() - 1));
    EXPECT_EQ(buffer, "");
    EXPECT_THAT(d_log.take(), ElementsAre("WARN size (8) exceeds max_size (7) for file " + d_path));

    std::filesystem::resize_file(d_path, File::kMaxLoadSize + 1);
    EXPECT_FALSE(File::loadIntoMem(d_path, buffer));
    EXPECT_THAT(d_log.take(),
                ElementsAre("WARN size (67108865) exceeds max_size (67108864) for file " + d_path));
}

TEST_F(FileTest, FailedLoadLeavesNothing) {
    test::writeFile(d_path, "abc");
    std::string buffer = "old";
    d_files.sizeToTell = 5; // cut by someone else meanwhile
    EXPECT_FALSE(load(buffer));
    EXPECT_EQ(buffer, "");
    EXPECT_THAT(d_log.take(), ElementsAre("WARN got 3 instead of 5 for '" + d_path + "'"));
    d_files.reads = {2, -EIO};
    EXPECT_FALSE(load(buffer));
    EXPECT_EQ(buffer, "");
    EXPECT_THAT(d_log.take(), ElementsAre(failed("readInto - failed reading 5 bytes", EIO)));
    EXPECT_FALSE(File::loadIntoMem("\xC0\x80", buffer)) << "not UTF-8";
    EXPECT_THAT(d_log.take(), testing::Contains(failedOpening("\xC0\x80", 1, EILSEQ)));
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
    EXPECT_THAT(d_files.opened, IsEmpty()) << "a name may have come to mean something else";
    EXPECT_EQ(content(), "new");
    EXPECT_TRUE(File::createFromMemSafe(d_path, core::GUniqueBuf(kBytes.data(), 8, 0, 0)));
    EXPECT_EQ(content(), kBytes);
    EXPECT_TRUE(File::createFromMemSafe(d_path, core::GUniqueBuf()));
    EXPECT_EQ(content(), "");
    EXPECT_TRUE(store(d_folder.path() + "\\other"));
    EXPECT_EQ(test::readFile(d_folder / "other"), "new");
    EXPECT_THAT(d_folder.names(), ElementsAre("Settings", "other"));
    EXPECT_THAT(d_log.take(), IsEmpty());
}

TEST_F(SafeStore, BareNameIsInTheWorkingFolder) {
    const test::WorkingFolder folder;
    EXPECT_TRUE(store("Settings"));
    EXPECT_EQ(test::readFile(folder / "Settings"), "new");
}

TEST_F(SafeStore, FilesOfAnyNameAreMadeReadReplacedAndRemoved) {
    const std::pair<std::string, std::string> rows[] = {
        {" two  words", "a settings file"},
        {"Straße", "дверь"},
        {"摄像", "🔒🎥🔒"}, // beyond sixteen bits
        {"v1.2.3", "e=f,g;h'i`j%k#l@m!"},
        {std::string(60, 'd'), std::string(100, 'f')},
    };
    for (const auto& [name, file] : rows) {
        SCOPED_TRACE(name);
        const std::string folder = core::format("%s\\%s\\sub", d_folder.path(), name);
        const std::string path = core::format("%s\\%s", folder, file);
        ASSERT_TRUE(FileUtils::createPath(folder));
        std::string content;
        for (const std::string text : {"first", "second one"}) {
            EXPECT_TRUE(File::createFromMemSafe(path, text.data(), text.size()));
            EXPECT_TRUE(File::loadIntoMem(path, content));
            EXPECT_EQ(content, text);
        }
        const auto there = test::systemPath(d_folder / name) / "sub";
        EXPECT_TRUE(std::filesystem::exists(there / test::systemPath(file)));
        EXPECT_EQ(core::Wrapper::unlink(path), 0);
        EXPECT_FALSE(FileUtils::exists(path));
        EXPECT_TRUE(std::filesystem::is_empty(there)) << "a temporary file remains";
    }
    EXPECT_THAT(d_log.take(), IsEmpty());
    const std::string tooLong = d_folder / std::string(300, 'd');
    EXPECT_FALSE(FileUtils::exists(tooLong));
    EXPECT_FALSE(FileUtils::createPath(tooLong));
    EXPECT_FALSE(store(tooLong + "\\Settings"));
    EXPECT_THAT(d_log.take(), testing::SizeIs(3)) << "one of the folder, two of the file";
    EXPECT_THAT(d_checks.take(), IsEmpty());
}

TEST_F(SafeStore, NeedsAFileName) {
    for (const std::string& path : {std::string(), d_folder.path() + "/", d_folder.path() + "\\"}) {
        EXPECT_FALSE(store(path)) << path;
        EXPECT_THAT(d_checks.take(),
                    ElementsAre(test::FailedCheck{"CHECKF", "utl_file.cpp", 890, 0, ""}));
    }
    EXPECT_THAT(d_folder.names(), ElementsAre("Settings"));
}

TEST_F(SafeStore, FailedTemporaryIsTwoLines) {
    const std::pair<std::string, std::string> rows[] = {
        {d_folder / "missing", "\\"}, {"\\", ""}, {"/", ""}, {"C:\\", ""}};
    for (const auto& [folder, separator] : rows) { // roots keep theirs
        EXPECT_FALSE(store(folder + separator + "\xff")) << "no file system is asked";
        EXPECT_THAT(d_log.take(),
                    testing::Contains("WARN File::createFromMemSafe - failed creating temp file "
                                      "(path=" +
                                      folder + ", prefix=\xff)"));
    }
}

TEST_F(SafeStore, FailedRenameDeletesTheTemporary) {
    const std::string target = d_folder / "folder";
    std::filesystem::create_directory(target);
    EXPECT_FALSE(store(target));
    const auto lines = d_log.take();
    ASSERT_EQ(lines.size(), 2U);
    const std::string temporary = d_folder / "fol";
    EXPECT_THAT(lines[0], StartsWith("WARN '" + temporary));
    EXPECT_THAT(lines[1],
                StartsWith(warning(target) + "renaming file from temporary '" + temporary));
    EXPECT_THAT(d_folder.names(), ElementsAre("Settings", "folder"));
}

TEST_F(SafeStore, FailedWriteLeavesTheTemporaryAndTheOldFile) {
    d_files.writes = {1, -ENOSPC};
    EXPECT_FALSE(store(d_path));
    d_files.flushes = {-EIO};
    EXPECT_FALSE(store(d_path));
    const auto failed = StartsWith(warning(d_path) + "creating temp file '" + (d_folder / "Set"));
    EXPECT_THAT(d_log.take(), ElementsAre(testing::HasSubstr(":write(0,3,1) - "),
                                          testing::HasSubstr("(only wrote 1 bytes)"), failed,
                                          testing::HasSubstr(":close - "), failed));
    EXPECT_EQ(content(), "old");
    EXPECT_THAT(d_folder.names(), testing::SizeIs(3))
        << "both temporary files are left for inspection";
}

} // namespace
