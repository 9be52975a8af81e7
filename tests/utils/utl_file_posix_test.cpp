#include "internal/utl_file_system.h"
#include "temp_folder.h"
#include "testing_matchers.h"
#include "utl_file.h"
#include "utl_fileutils.h"
#include "utl_inireader.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <string>

namespace {

TEST(FilePosix, ChildProcessesInheritNoFile) {
    const test::TempFolder folder;
    test::writeFile(folder / "file", "");
    const utl::File::System& system = utl::File::theSystem();
    const int handle = system.open(folder / "file", O_RDONLY, 0);
    EXPECT_NE(fcntl(handle, F_GETFD) & FD_CLOEXEC, 0);
    EXPECT_EQ(system.close(handle), 0);
    EXPECT_NE(utl::FileUtils::createTempFile(folder.path(), "a"), "");
    EXPECT_EQ(system.open(folder / "file", O_RDONLY, 0), handle) << "a file was left open";
    EXPECT_EQ(system.close(handle), 0);
}

TEST(FilePosix, PipesAreNotWaitedForNorFoldersRead) {
    const test::TempFolder folder;
    const std::string pipe = folder / "Settings";
    ASSERT_EQ(mkfifo(pipe.c_str(), S_IRWXU), 0);
    EXPECT_THAT([&] { EXPECT_FALSE(utl::IniReader().load(pipe)); },
                test::Logs("WARN File:openFile(" + pipe +
                           ",1,384) - failed opening : Operation not supported"));
    EXPECT_THAT(
        [&] { EXPECT_FALSE(utl::IniReader().load(folder.path())); },
        test::Logs("WARN File(" + folder.path() + "):size - failed with error 21:Is a directory"));
}

TEST(FilePosix, OnlyTheFirstLevelCanBeADrive) {
    const test::TempFolder folder;
    EXPECT_TRUE(utl::FileUtils::createPath(folder / "C:/x:/ab:"));
    EXPECT_TRUE(utl::FileUtils::exists(folder / "C:/x:/ab:"));
}

} // namespace
