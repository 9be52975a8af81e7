#include "core_guard.h"

#include "child_process.h"
#include "core_check.h"
#include "core_paths.h"
#include "core_rcsname.h"
#include "core_wrapper.h"
#include "log_recorder.h"
#include "temp_folder.h"

#include <gmock/gmock.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <utility>

namespace {

using testing::ElementsAre;
using testing::EndsWith;
using testing::MatchesRegex;
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

int crash(int, char** argv) {
    core::Paths::setDefaultPaths();
    const std::string kind = argv[1];
    if (kind == "exception")
        throw std::runtime_error("out of paper");
    if (kind == "nullWrite")
        core::deliberateFault();
    const test::ScriptedObserver observer({core::kChannelCrit}, [](const std::string& line) {
        if (line.find("GASSERT") != std::string::npos)
            core::deliberateFault();
    });
    CHECKF(false);
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
    for (const char* kind : {"nullWrite", "exception", "inCheckHandler"}) {
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
    const auto fault = [](const std::string&) { core::deliberateFault(); };
    test::ScriptedObserver observer({core::kChannelCrit}, fault);
    runWith(crash, {"tool", "nullWrite"});
}

TEST(GuardProcess, ACrashOfTheHandlingEndsTheProcess) {
    const test::WorkingFolder folder;
    EXPECT_EQ(test::runChild("crashesAgain").status, kCrashed);
    EXPECT_TRUE(std::filesystem::exists(kDump));
}

TEST(SplitCommandLine, FollowsTheExecutableByWords) {
    core::Arguments arguments = core::splitCommandLine(R"("C:\Program Files\a b"  "" x="a b")");
    char** const values = arguments.values();
    EXPECT_THAT(std::vector<std::string>(values, values + arguments.count()),
                ElementsAre(core::Wrapper::executablePath(260), R"(C:\Program Files\a b)", "",
                            "x=\"a", "b\""));
    EXPECT_EQ(values[arguments.count()], nullptr);
}

} // namespace
