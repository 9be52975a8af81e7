#include "core_filelog.h"

#include "core_log.h"
#include "core_timespec.h"
#include "temp_folder.h"
#include "testing_matchers.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <regex>
#include <sstream>
#include <thread>

namespace {

using testing::ElementsAre;

/// Puts the log into a file for a scope.
struct Installed {
    explicit Installed(core::FileLogImpl::Options options) {
        auto file = std::make_unique<core::FileLogImpl>(std::move(options));
        log = file.get();
        core::MasterLogger::setImplementation(std::move(file));
    }
    ~Installed() { core::MasterLogger::setImplementation(nullptr); }
    core::FileLogImpl* log; // the master logger's
};

TEST(FileLog, WritesLinesThatNoTextCanForge) {
    const test::TempFolder folder;
    const std::string path = folder / "a.log";
    const Installed installed({.path = path});
    core::logText(core::kChannelInfo, "one");
    EXPECT_EQ(test::readFile(path), "") << "only CRIT and WARN are urgent";
    core::Logger logger(7);
    core::logText(logger, core::kChannelWarn, "two\nthree\x1b[31m\r\t");
    const std::regex head(R"(\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\.\d{3} [+-]\d{4} \[\d+\])");
    const std::string text = test::readFile(path);
    EXPECT_EQ(std::regex_replace(text, head, "HEAD"),
              "HEAD INFO one\nHEAD WARN {7} two\n\tthree?[31m?\t\n");
    core::CivilTime told{};
    std::istringstream parts(std::regex_replace(text.substr(0, 19), std::regex("[-:]"), " "));
    parts >> told.year >> told.month >> told.day >> told.hour >> told.minute >> told.second;
    const int64_t now = core::secondsOfCivilTime(core::localCivilTime(core::now()));
    EXPECT_LT(std::abs(core::secondsOfCivilTime(told) - now), 600);

    const std::string missing = folder / "none/a.log";
    EXPECT_THAT([&] { EXPECT_FALSE(core::FileLogImpl({.path = missing}).isOpen()); },
                test::Logs("WARN core::FileLogImpl(" + missing +
                           ") - failed opening : No such file or directory"));
}

TEST(FileLog, LosesNothingWhenThreadsMeetARotation) {
    constexpr int kThreads = 4;
    constexpr int kLines = 500;
    constexpr uint64_t kMaxSize = 3000;
    const test::TempFolder folder;
    {
        const Installed installed(
            {.path = folder / "a.log", .maxSize = kMaxSize, .maxFiles = 1000});
        std::vector<std::thread> threads;
        threads.reserve(kThreads);
        for (int thread = 0; thread < kThreads; ++thread) {
            threads.emplace_back([thread] {
                for (int line = 0; line < kLines; ++line)
                    core::logf(line % 7 == 0 ? core::kChannelWarn : core::kChannelInfo, "<%d:%d>",
                               thread, line);
            });
        }
        for (std::thread& thread : threads)
            thread.join();
    }
    std::string all;
    for (const std::string& name : folder.names()) {
        const std::string content = test::readFile(folder / name);
        EXPECT_TRUE(content.size() <= kMaxSize && content.ends_with(">\n")) << name;
        all += content;
    }
    EXPECT_EQ(std::count(all.begin(), all.end(), '\n'), kThreads * kLines);
    for (int thread = 0; thread < kThreads; ++thread) {
        for (int line = 0; line < kLines; ++line)
            EXPECT_NE(all.find(core::format("<%d:%d>\n", thread, line)), std::string::npos);
    }
}

TEST(FileLog, KeepsABoundedNumberOfFilesAndAppends) {
    const test::TempFolder folder;
    for (int run = 0; run < 2; ++run) {
        const Installed installed({.path = folder / "a.log", .maxSize = 100, .maxFiles = 3});
        for (int line = 0; line < 5; ++line)
            core::logf(core::kChannelInfo, "%d%d %s", run, line, std::string(30, '.'));
    }
    ASSERT_THAT(folder.names(), ElementsAre("a.log", "a.log.1", "a.log.2"));
    EXPECT_NE(test::readFile(folder / "a.log.2").find(" 12 "), std::string::npos);
    const std::string last = test::readFile(folder / "a.log");
    EXPECT_NE(last.find(" 14 "), std::string::npos);
    {
        const Installed installed({.path = folder / "a.log", .maxSize = 2 * last.size()});
        core::logf(core::kChannelInfo, "14 %s", std::string(30, '.'));
    }
    EXPECT_EQ(test::readFile(folder / "a.log").size(), 2 * last.size()) << "it just fits";
}

} // namespace
