#include "log_recorder.h"
#include "temp_folder.h"
#include "utl_file.h"
#include "utl_file_calls.h"
#include "utl_fileutils.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>

namespace {

TEST(FilePosix, ChildProcessesInheritNoFile) {
    const test::TempFolder folder;
    test::writeFile(folder / "file", "");
    const auto& calls = utl::detail::kSystemFileCalls;
    const int handle = calls.open(folder / "file", O_RDONLY, 0);
    EXPECT_NE(fcntl(handle, F_GETFD) & FD_CLOEXEC, 0);
    EXPECT_EQ(calls.close(handle), 0);
}

TEST(FilePosix, FoldersAndFullDisksAreReported) {
    const test::TempFolder folder;
    test::LogRecorder log;
    std::string buffer;
    EXPECT_FALSE(utl::File::loadIntoMem(folder.path(), buffer));
    EXPECT_FALSE(utl::File::createFromMem("/dev/full", "1", 1, 0, utl::File::kOwnerOnly));
    EXPECT_THAT(log.take(),
                testing::ElementsAre("WARN File(" + folder.path() +
                                         "):size - failed with error 21:Is a directory",
                                     "WARN File(/dev/full):write(0,1,0) - failed with error 28:"
                                     "No space left on device"));
}

TEST(FilePosix, OnlyTheFirstLevelCanBeADrive) {
    const test::TempFolder folder;
    EXPECT_TRUE(utl::FileUtils::createPath(folder / "C:/x:/ab:"));
    EXPECT_TRUE(utl::FileUtils::exists(folder / "C:/x:/ab:"));
}

} // namespace
