#include "core_wrapper.h"
#include "temp_folder.h"
#include "testing_logrecorder.h"
#include "utl_file.h"
#include "utl_fileutils.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <windows.h>

#include <cstdio>
#include <filesystem>
#include <io.h>
#include <string>
#include <thread>

// What only Windows knows: attributes that refuse, files that are locked while open,
// and paths with a drive, a share or a prefix in front.

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;
using utl::File;
using utl::FileUtils;

class WindowsFile : public testing::Test {
protected:
    WindowsFile() { test::writeFile(d_path, "old"); }
    bool store() const { return File::createFromMemSafe(d_path, "new", 3); }
    /// The file, opened with a sharing mode.
    HANDLE held(DWORD sharing) const {
        return CreateFileA(d_path.c_str(), GENERIC_READ, sharing, nullptr, OPEN_EXISTING,
                           FILE_ATTRIBUTE_NORMAL, nullptr);
    }

    test::TempFolder d_folder;
    const std::string d_path = d_folder / "Settings";
    test::LogRecorder d_log;
};

// Windows refuses to replace such a file; Wine does it, as Linux does.
TEST_F(WindowsFile, ReadOnlyTargetIsReplacedWholeOrNotAtAll) {
    ASSERT_NE(SetFileAttributesA(d_path.c_str(), FILE_ATTRIBUTE_READONLY), 0);
    const bool replaced = store();
    EXPECT_EQ(test::readFile(d_path), replaced ? "new" : "old");
    EXPECT_THAT(d_folder.names(), ElementsAre("Settings"));
    EXPECT_THAT(d_log.take(), testing::SizeIs(replaced ? 0 : 2));
    SetFileAttributesA(d_path.c_str(), FILE_ATTRIBUTE_NORMAL);
}

TEST_F(WindowsFile, FileHeldOpenIsNotReplaced) {
    for (const DWORD sharing : {DWORD{FILE_SHARE_READ}, DWORD{0}}) {
        HANDLE file = held(sharing);
        EXPECT_FALSE(store());
        CloseHandle(file);
        EXPECT_THAT(d_log.take(),
                    ElementsAre(testing::AllOf(testing::HasSubstr("'=>'" + d_path + "' failed : "),
                                               testing::Not(testing::EndsWith("\n"))),
                                testing::HasSubstr(" - failed renaming file from temporary '")));
        EXPECT_EQ(test::readFile(d_path), "old");
        EXPECT_THAT(d_folder.names(), ElementsAre("Settings")) << "the temporary file remains";
    }
}

TEST_F(WindowsFile, FileThatIsReadForAMomentIsReplaced) {
    std::thread reader([file = held(FILE_SHARE_READ)] {
        Sleep(100);
        CloseHandle(file);
    });
    EXPECT_TRUE(store());
    reader.join();
    EXPECT_EQ(test::readFile(d_path), "new");
    EXPECT_THAT(d_log.take(), IsEmpty());
}

TEST_F(WindowsFile, DevicesAndStreamsAreNoFiles) {
    std::string content;
    EXPECT_FALSE(File::loadIntoMem("NUL", content));
    EXPECT_FALSE(File::createFromMemSafe(d_folder / "a:b", "new", 3));
    EXPECT_THAT(d_log.take(), testing::SizeIs(3));
    EXPECT_THAT(d_folder.names(), ElementsAre("Settings"));
}

TEST_F(WindowsFile, OpenFilesAreNotInherited) {
    File file;
    ASSERT_TRUE(file.openFile(d_path, File::kRead));
    FILE* const stream = core::Wrapper::fopen(d_path, "rb");
    ASSERT_NE(stream, nullptr);
    for (int number = 3; number <= _fileno(stream); ++number) {
        DWORD flags = HANDLE_FLAG_INHERIT;
        const auto handle = reinterpret_cast<HANDLE>(_get_osfhandle(number));
        if (handle != INVALID_HANDLE_VALUE) {
            EXPECT_NE(GetHandleInformation(handle, &flags), 0);
            EXPECT_EQ(flags & HANDLE_FLAG_INHERIT, 0U) << number;
        }
    }
    std::fclose(stream);
}

TEST_F(WindowsFile, PathsMayBeginWithADriveOrAPrefix) {
    for (const std::string prefix : {"", "\\\\?\\", "\\\\.\\"}) {
        const std::string folder = prefix + d_folder.path() + "\\made";
        EXPECT_TRUE(FileUtils::createPath(folder));
        EXPECT_TRUE(File::createFromMemSafe(folder + "\\Settings", "new", 3));
        EXPECT_EQ(std::filesystem::remove_all(d_folder / "made"), 2U) << folder;
    }
    const std::string path = "C:\\orvistrand-test-settings";
    EXPECT_TRUE(File::createFromMemSafe(path, "new", 3)) << "in a drive's root";
    EXPECT_EQ(test::readFile(path), "new");
    EXPECT_EQ(core::Wrapper::unlink(path), 0);
    EXPECT_THAT(d_log.take(), IsEmpty());
}

TEST_F(WindowsFile, DrivesAndSharesAreNotMade) {
    EXPECT_FALSE(FileUtils::exists("C:\\")) << "looked for without its separator";
    EXPECT_TRUE(FileUtils::createPath("C:\\"));
    EXPECT_FALSE(FileUtils::createPath("Q:\\missing drive\\folder"));
    for (const std::string share : {"\\\\no-such-server\\share", "//no-such-server/share"}) {
        EXPECT_TRUE(FileUtils::createPath(share));
        EXPECT_FALSE(FileUtils::createPath(share + "\\folder\\sub"));
    }
    const std::string failed = "WARN failed to create '";
    EXPECT_THAT(d_log.take(),
                ElementsAre(StartsWith(failed + "Q:\\missing drive' : "),
                            StartsWith(failed + "\\\\no-such-server\\share\\folder' : "),
                            StartsWith(failed + "//no-such-server/share\\folder' : ")));
}

} // namespace
