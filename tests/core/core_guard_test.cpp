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

TEST(Guard, ReturnsWhatTheStartFunctionReturns) {
    EXPECT_EQ(runWith(addArguments, {"tool", "40", "2"}), 42);
}

TEST(Guard, OnlyTheExactSwitchBehindTheNameLeavesItOut) {
    const test::WorkingFolder folder;
    core::Paths::setDefaultPaths();
    for (const char* other : {"JITD", "-jitd"})
        EXPECT_EQ(runWith(throwNumber, {"jitd", other}), core::kCrashStatus) << other;
    EXPECT_THROW(runWith(throwNumber, {"tool", "jitd"}), int);
    EXPECT_THROW(runWith(throwNumber, {"tool", "x", "jitd"}), int);
    EXPECT_EQ(core::runGuardedWith([](int, char**) { return 5; }, 0, nullptr), 5);
}

TEST(DumpFilePath, JoinsFolderModuleAndTag) {
    const struct {
        const char* folder;
        const char* executable;
        const char* path;
    } rows[] = {
        {R"(C:\Data\Dumps)", "configure", R"(C:\Data\Dumps\configure-tag.dmp)"},
        {"./a/dumps", "configure.exe", R"(.\a\dumps\configure-tag.dmp)"},
        {"d", "tool.EXE", R"(d\tool.EXE-tag.dmp)"},
        {"d", "", R"(d\unknown-tag.dmp)"},
        {"d", ".exe", R"(d\-tag.dmp)"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(core::dumpFilePath(row.folder, row.executable, "tag"), row.path);
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

void logToImplementation() {
    core::MasterLogger::setImplementation(new test::ScriptedImpl(faultOn));
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
        {"inWritePath", logToImplementation},
        {"inCheckHandler", failCheck},
        {"none", [] {}},
    };
    kinds.at(argv[1])();
    return 0;
}

CHILD_CASE(guardedCrash) { core::endProcess(runWith(crash, {"tool", argument})); }

class GuardProcess : public testing::Test {
protected:
    std::string logged() const { return test::readFile(folder / "files/dumps.log"); }

    const test::WorkingFolder folder;
};

TEST_F(GuardProcess, LeavesEvidenceOfEveryCrash) {
    std::filesystem::create_directory("files");
    std::string log;
    for (const char* kind : {"nullWrite", "badJump", "division", "stackOverflow", "exception",
                             "inObserver", "inWritePath", "inCheckHandler"}) {
        SCOPED_TRACE(kind);
        const test::ChildResult child = test::runChild("guardedCrash", kind);
        EXPECT_EQ(child.status, kCrashed);
        EXPECT_THAT(child.out, EndsWith("[CRIT] Wrote " + kTarget + "\n"));
        EXPECT_TRUE(std::filesystem::remove(kDump));
        const std::string before = std::exchange(log, logged());
        EXPECT_THAT(log, StartsWith(before));
        EXPECT_THAT(log.substr(before.size()),
                    MatchesRegex("....-..-.. ..:..:..: core_tests " + kTag + "\r?\n"));
    }
}

TEST_F(GuardProcess, MakesNoFolderForItsLog) {
    EXPECT_EQ(test::runChild("guardedCrash", "nullWrite").status, kCrashed);
    EXPECT_FALSE(std::filesystem::exists("files"));
}

TEST_F(GuardProcess, ARunWithoutACrashLeavesNothing) {
    EXPECT_EQ(test::runChild("guardedCrash", "none").status, 0);
    EXPECT_TRUE(std::filesystem::is_empty("."));
}

CHILD_CASE(crashesAgain) {
    test::ScriptedObserver observer({core::kChannelCrit}, faultOn);
    runWith(crash, {"tool", "nullWrite"});
}

TEST_F(GuardProcess, ACrashOfTheHandlingEndsTheProcess) {
    EXPECT_EQ(test::runChild("crashesAgain").status, kCrashed);
    EXPECT_TRUE(std::filesystem::exists(kDump));
}

int crashElsewhere(int, char**) {
    std::thread(core::deliberateFault).join();
    return 0;
}

CHILD_CASE(crashesOnAnotherThread) { runWith(crashElsewhere, {"tool"}); }

CHILD_CASE(crashesAfterTheGuard) {
    static const struct Late {
        ~Late() { core::deliberateFault(); }
    } late;
    std::exit(runWith(addArguments, {"tool", "-1", "1"}));
}

CHILD_CASE(unguardedCrash) { std::exit(runWith(crash, {"tool", "nullWrite", "jitd"})); }

TEST_F(GuardProcess, LeavesOtherCrashesToTheSystem) {
    for (const char* where : {"crashesOnAnotherThread", "crashesAfterTheGuard", "unguardedCrash"}) {
        const test::ChildResult child = test::runChild(where);
        EXPECT_NE(child.status, 0) << where;
        EXPECT_NE(child.status, kCrashed) << where;
        EXPECT_TRUE(std::filesystem::is_empty(".")) << where;
    }
}

CHILD_CASE(endsAtOnce) {
    std::atexit([] { std::fputs("exit handler", stdout); });
    std::fputs("written before", stdout);
    core::endProcess(core::kCrashStatus);
}

TEST_F(GuardProcess, EndsAtOnceWithItsOutputWritten) {
    const test::ChildResult child = test::runChild("endsAtOnce");
    EXPECT_EQ(child.status, kCrashed);
    EXPECT_THAT(child.out, EndsWith("written before"));
}

TEST(Guard, LogsInvalidParameters) {
    test::LogRecorder log({core::kChannelCrit});
    core::onInvalidParameter("a != 0", "strcpy_s", "strcpy.c", 57);
    EXPECT_THAT(log.take(), ElementsAre("CRIT Invalid parameter detected (exp=a != 0) "
                                        "(func=strcpy_s) (file=strcpy.c:57)"));
}

TEST(SplitCommandLine, FollowsTheExecutableByWords) {
    const struct {
        const char* text;
        std::vector<std::string> words;
    } rows[] = {
        {"", {}},
        {"   ", {}},
        {"one  two ", {"one", "two"}},
        {R"("C:\Program Files\a b" jitd)", {R"(C:\Program Files\a b)", "jitd"}},
        {R"("" x="a b")", {"", "x=\"a", "b\""}},
        {R"("open end)", {"open end"}},
        {"a\tb", {"a\tb"}},
    };
    for (const auto& row : rows) {
        core::Arguments arguments = core::splitCommandLine(row.text);
        std::vector<std::string> expected = row.words;
        expected.insert(expected.begin(), core::Wrapper::executablePath(260));
        char** const values = arguments.values();
        EXPECT_EQ(std::vector<std::string>(values, values + arguments.count()), expected);
        EXPECT_EQ(values[arguments.count()], nullptr);
    }
}

TEST(Arguments, KeepTheirTextsWhenMoved) {
    core::Arguments first({"tool", "short"});
    const char* const text = first.values()[1];
    core::Arguments second(std::move(first));
    EXPECT_EQ(second.count(), 2);
    EXPECT_EQ(second.values()[1], text);
    EXPECT_STREQ(second.values()[1], "short");
}

} // namespace
