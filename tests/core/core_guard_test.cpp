#include "core_guard.h"

#include "child_process.h"
#include "core_check.h"
#include "core_log.h"
#include "core_paths.h"
#include "core_rcsname.h"
#include "core_wrapper.h"
#include "log_recorder.h"
#include "temp_folder.h"

#include <gmock/gmock.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <stdexcept>
#include <thread>
#include <utility>

namespace {

using testing::AllOf;
using testing::EndsWith;
using testing::MatchesRegex;
using testing::Ne;
using testing::StartsWith;

constexpr int kCrashed = 129; // what a parent sees of kCrashStatus

int addArguments(int argc, char** argv) {
    return argc == 3 && argv[3] == nullptr ? std::atoi(argv[1]) + std::atoi(argv[2]) : -1;
}

int throwNumber(int, char**) { throw 7; }

int runWith(core::StartFunction start, std::vector<std::string> texts) {
    core::Arguments arguments(std::move(texts));
    return core::runGuardedWith(start, arguments.count(), arguments.values());
}

TEST(Guard, ReturnsTheResultUnlessTheExactSwitchLeavesItOut) {
    const test::WorkingFolder folder;
    core::Paths::setDefaultPaths();
    EXPECT_EQ(runWith(addArguments, {"tool", "40", "2"}), 42);
    EXPECT_TRUE(std::filesystem::is_empty("."));
    EXPECT_EQ(runWith(throwNumber, {"jitd", "JITD"}), core::kCrashStatus);
    EXPECT_THROW(runWith(throwNumber, {"tool", "x", "jitd"}), int);
    EXPECT_EQ(core::runGuardedWith([](int, char**) { return 5; }, 0, nullptr), 5);
}

TEST(DumpFilePath, JoinsFolderModuleAndTag) {
    const auto path = core::dumpFilePath;
    EXPECT_EQ(path("./a/dumps", "configure.exe", "tag"), R"(.\a\dumps\configure-tag.dmp)");
    EXPECT_EQ(path(R"(C:\Dumps)", "tool.EXE", "tag"), R"(C:\Dumps\tool.EXE-tag.dmp)");
    EXPECT_EQ(path("d", "", "tag"), R"(d\unknown-tag.dmp)");
}

const std::string kTag(core::dumpVersionTag());
const std::string kDump = "dumps/core_tests-" + kTag + ".dmp";
const std::string kTarget =
    R"(minidump for 'core_tests' to '.\dumps\core_tests-)" + kTag + ".dmp', version '" + kTag + "'";

volatile int zero = 0;

int overflowStack(volatile char* above) {
    volatile char frame[4096];
    frame[0] = above[0];
    return zero == 0 ? overflowStack(frame) + frame[0] : 0;
}

void overflowStack() {
    char bottom = 0;
    overflowStack(&bottom);
}

__attribute__((noinline, no_sanitize("undefined"))) void divide() { zero = 100 / zero; }

__attribute__((noinline, no_sanitize("undefined"))) void jumpToNowhere() {
    void (*volatile nowhere)() = nullptr;
    nowhere(); // NOLINT(clang-analyzer-core*)
    zero = 0;  // so that it is a call
}

void faultOn(const std::string& line) {
    for (const char* part : {"WARN now", "GASSERT", "minidump"}) {
        if (line.find(part) != std::string::npos)
            core::deliberateFault();
    }
}

void logToObserver() {
    const test::ScriptedObserver observer({core::kChannelWarn}, faultOn);
    core::logText(core::kChannelWarn, "now");
}

void failCheck() {
    const test::ScriptedObserver observer({core::kChannelCrit}, faultOn);
    CHECKF(false);
}

int crash(int, char** argv) {
    core::Paths::setDefaultPaths();
    const std::map<std::string, void (*)()> kinds = {
        {"nullWrite", core::deliberateFault},
        {"badJump", jumpToNowhere},
        {"division", divide},
        {"stackOverflow", [] { overflowStack(); }},
        {"exception", [] { throw std::runtime_error("out of paper"); }},
        {"inObserver", logToObserver},
        {"inCheckHandler", failCheck},
    };
    kinds.at(argv[1])();
    return 0;
}

CHILD_CASE(guardedCrash) {
    const int status = runWith(crash, {"tool", argument});
    std::atexit([] { std::fputs("exit handler", stdout); });
    std::fputs("last words", stdout);
    core::endProcess(status);
}

TEST(GuardProcess, LeavesEvidenceOfEveryCrash) {
    const test::WorkingFolder folder;
    EXPECT_EQ(test::runChild("guardedCrash", "nullWrite").status, kCrashed);
    EXPECT_FALSE(std::filesystem::exists("files")) << "made a folder for its log";
    std::filesystem::create_directory("files");
    std::string log;
    for (const char* kind : {"nullWrite", "badJump", "division", "stackOverflow", "exception",
                             "inObserver", "inCheckHandler"}) {
        SCOPED_TRACE(kind);
        const test::ChildResult child = test::runChild("guardedCrash", kind);
        EXPECT_EQ(child.status, kCrashed);
        EXPECT_THAT(child.out, EndsWith("[CRIT] Wrote " + kTarget + "\nlast words"));
        EXPECT_TRUE(std::filesystem::remove(kDump));
        const std::string before = std::exchange(log, test::readFile("files/dumps.log"));
        EXPECT_THAT(log, StartsWith(before));
        EXPECT_THAT(log.substr(before.size()),
                    MatchesRegex("....-..-.. ..:..:..: core_tests " + kTag + "\r?\n"));
    }
}

CHILD_CASE(crashesAgain) {
    test::ScriptedObserver observer({core::kChannelCrit}, faultOn);
    runWith(crash, {"tool", "nullWrite"});
}

TEST(GuardProcess, ACrashOfTheHandlingEndsTheProcess) {
    const test::WorkingFolder folder;
    EXPECT_EQ(test::runChild("crashesAgain").status, kCrashed);
    EXPECT_TRUE(std::filesystem::exists(kDump));
}

int crashElsewhere(int, char**) {
    std::thread(core::deliberateFault).join();
    return 0;
}

CHILD_CASE(crashesOnAnotherThread) { runWith(crashElsewhere, {"tool"}); }

TEST(GuardProcess, LeavesOtherThreadsToTheSystem) {
    const test::WorkingFolder folder;
    EXPECT_THAT(test::runChild("crashesOnAnotherThread").status, AllOf(Ne(0), Ne(kCrashed)));
    EXPECT_TRUE(std::filesystem::is_empty("."));
}

TEST(SplitCommandLine, FollowsTheExecutableByWords) {
    const std::pair<const char*, std::vector<std::string>> rows[] = {
        {"   ", {}},
        {R"("C:\Program Files\a b" jitd)", {R"(C:\Program Files\a b)", "jitd"}},
        {R"("" x="a b")", {"", "x=\"a", "b\""}},
        {"a\tb", {"a\tb"}},
    };
    for (const auto& [text, words] : rows) {
        core::Arguments arguments = core::splitCommandLine(text);
        std::vector<std::string> expected = words;
        expected.insert(expected.begin(), core::Wrapper::executablePath(260));
        char** const values = arguments.values();
        EXPECT_EQ(std::vector<std::string>(values, values + arguments.count()), expected);
        EXPECT_EQ(values[arguments.count()], nullptr);
    }
}

} // namespace
