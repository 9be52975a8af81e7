#include "core_filelog.h"

#include "core_log.h"
#include "temp_folder.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace {

namespace fs = std::filesystem;

std::unique_ptr<core::LogImpl> fileLog(const std::string& path) {
    return std::make_unique<core::FileLogImpl>(core::FileLogImpl::Options{.path = path});
}

TEST(FileLog, BeginsAnewWhereItsFileWasMovedOrDeleted) {
    const test::TempFolder folder;
    const std::string path = folder / "a.log";
    core::MasterLogger::setImplementation(fileLog(path));
    core::logText(core::kChannelWarn, "one");
    fs::rename(path, folder / "moved");
    core::logText(core::kChannelWarn, "two");
    EXPECT_TRUE(test::readFile(folder / "moved").ends_with("one\n"));
    EXPECT_TRUE(test::readFile(path).ends_with("WARN two\n"));
    fs::remove(path);
    core::logText(core::kChannelWarn, "three");
    EXPECT_TRUE(test::readFile(path).ends_with("three\n"));
    core::MasterLogger::setImplementation(nullptr);
}

TEST(FileLog, TellsOnceOfAFullDiskAndGoesOnWhenThereIsRoom) {
    const test::TempFolder folder;
    const std::string path = folder / "a.log";
    fs::create_symlink("/dev/full", path);
    testing::internal::CaptureStderr();
    core::MasterLogger::setImplementation(fileLog(path));
    core::logText(core::kChannelWarn, "one");
    core::logText(core::kChannelCrit, "two");
    for (int line = 0; line < 20; ++line)
        core::logText(core::kChannelInfo, std::string(100'000, 'x'));
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "FileLogImpl: cannot write '" + path + "': No space left on device\n");
    fs::remove(path);
    core::logText(core::kChannelWarn, "three");
    const std::string text = test::readFile(path);
    core::MasterLogger::setImplementation(nullptr);
    EXPECT_NE(text.find("WARN one\n"), std::string::npos);
    EXPECT_TRUE(text.ends_with("WARN 10 lines found no room here\n")) << text.substr(0, 300);
    EXPECT_NE(text.find("WARN three\n"), std::string::npos);
}

} // namespace
