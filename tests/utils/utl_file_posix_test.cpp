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
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <random>
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

// With --gtest_repeat=200 ten thousand times.
TEST(FilePosix, AKilledStoreTearsNoFile) {
    const test::TempFolder folder;
    const std::string path = folder / "Settings";
    std::string content(100000, 'a');
    test::writeFile(path, content);
    std::mt19937 random(std::random_device{}());
    for (int kills = 0; kills < 50; ++kills) {
        const pid_t child = fork();
        if (child == 0) {
            for (;;) { // files of one letter each
                content.assign(content.size(), content[0] == 'a' ? 'b' : 'a');
                (void)utl::File::createFromMemSafe(path, content.data(), content.size());
            }
        }
        usleep(random() % 3000);
        ::kill(child, SIGKILL);
        waitpid(child, nullptr, 0);
        const std::string stored = test::readFile(path);
        ASSERT_EQ(stored, content.assign(content.size(), stored[0]));
    }
}

TEST(FilePosix, OnlyTheFirstLevelCanBeADrive) {
    const test::WorkingFolder folder;
    EXPECT_TRUE(utl::FileUtils::createPath("C:"));
    EXPECT_THAT(folder.names(), testing::IsEmpty());
    EXPECT_TRUE(utl::FileUtils::createPath(folder / "C:/x:/ab:"));
    EXPECT_TRUE(utl::FileUtils::exists(folder / "C:/x:/ab:"));
}

} // namespace
