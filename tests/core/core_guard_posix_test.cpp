#include "core_guard.h"

#include "child_process.h"
#include "core_check.h"
#include "core_paths.h"
#include "core_rcsname.h"
#include "log_recorder.h"
#include "temp_folder.h"

#include <gmock/gmock.h>

#include <csignal>
#include <cstddef>
#include <cstdlib>
#include <unistd.h>

namespace {

using testing::ContainsRegex;
using testing::HasSubstr;

int crash(int, char** argv) {
    core::Paths::setDefaultPaths();
    const std::string kind = argv[1];
    if (kind == "abort")
        std::abort();
    if (kind == "lostStack")
        asm volatile("xorl %esp, %esp\n\tjmp *%rsp");
    return std::raise(std::stoi(kind));
}

CHILD_CASE(guardedSignal) {
    core::Arguments arguments({"tool", argument});
    std::exit(core::runGuardedWith(crash, arguments.count(), arguments.values()));
}

TEST(GuardSignals, TakesAbortsAndFaults) {
    const test::WorkingFolder folder;
    EXPECT_EQ(test::runChild("guardedSignal", "abort").status, 129);
    for (const int signal : {SIGBUS, SIGFPE, SIGTRAP})
        EXPECT_EQ(test::runChild("guardedSignal", std::to_string(signal)).status, 129) << signal;
    EXPECT_EQ(test::runChild("guardedSignal", std::to_string(SIGTERM)).signal, SIGTERM);
}

int alternateStackInUse(int, char**) {
    stack_t stack{};
    sigaltstack(nullptr, &stack);
    return stack.ss_flags == 0 ? 1 : 0;
}

TEST(Guard, PutsHandlersAndAlternateStackBack) {
    alignas(std::max_align_t) static char buffer[65536];
    stack_t stack{};
    stack.ss_sp = buffer;
    stack.ss_size = sizeof(buffer);
    stack_t stackBefore{};
    sigaltstack(&stack, &stackBefore);
    const auto handlerBefore = std::signal(SIGTRAP, SIG_IGN);

    EXPECT_EQ(core::runGuardedWith(alternateStackInUse, 0, nullptr), 1);

    EXPECT_EQ(std::signal(SIGTRAP, handlerBefore), SIG_IGN);
    sigaltstack(&stackBefore, &stack);
    EXPECT_EQ(stack.ss_sp, buffer);
}

int faultAfterNestedRun(int, char**) {
    core::Paths::setDefaultPaths();
    const int status = core::runGuardedWith([](int, char**) { return 0; }, 0, nullptr);
    if (status == 0)
        core::deliberateFault();
    return status;
}

CHILD_CASE(nestedGuard) { std::exit(core::runGuardedWith(faultAfterNestedRun, 0, nullptr)); }

TEST(GuardSignals, OutliveANestedGuard) {
    const test::WorkingFolder folder;
    EXPECT_EQ(test::runChild("nestedGuard").status, 129);
}

std::string reportOf(const std::string& kind) {
    const test::WorkingFolder folder;
    EXPECT_EQ(test::runChild("guardedCrash", kind).status, 129);
    return test::readFile("dumps/core_tests-" + std::string(core::dumpVersionTag()) + ".dmp");
}

TEST(CrashReport, TellsTheFaultAndWhere) {
    const struct {
        const char* kind;
        const char* cause;
        const char* stack;
    } rows[] = {
        {"nullWrite", "\nSignal 11 \\(SIGSEGV\\), code 1, address 0x0\n", "core::deliberateFault"},
        {"division", "\nSignal 8 \\(SIGFPE\\), code 1, address 0x[0-9a-f]+\n", ".*divide"},
        {"badJump", "\n    rip 0x0\n", ".*jumpToNowhere"},
        {"stackOverflow", "\nSignal 11 .*\n", ".*overflowStack"},
    };
    for (const auto& row : rows) {
        const std::string report = reportOf(row.kind);
        EXPECT_THAT(report, ContainsRegex(row.cause));
        EXPECT_THAT(report, ContainsRegex("\nMemory map\n[0-9a-f]+-[0-9a-f]+ "));
        EXPECT_THAT(report, ContainsRegex("\nStack\n    #00 0x[0-9a-f]+ in " +
                                          std::string(row.stack) + "\\(.*\\) \\(the program"));
    }
    EXPECT_THAT(reportOf("exception"),
                HasSubstr("\nC++ exception std::runtime_error: out of paper\n"));
}

TEST(CrashReport, EndsWhereItMeetsAFaultItself) {
    const test::WorkingFolder folder;
    const test::ChildResult child = test::runChild("guardedSignal", "lostStack");
    EXPECT_EQ(child.status, 129);
    EXPECT_THAT(child.out, HasSubstr("[CRIT] Wrote minidump"));
}

// Wine takes a file that is not open for a dump that is written.
TEST(CrashReport, ThatCannotBeWrittenIsReported) {
    const test::WorkingFolder folder;
    test::writeFile("dumps", "in the way");
    const test::ChildResult child = test::runChild("guardedCrash", "nullWrite");
    EXPECT_EQ(child.status, 129);
    EXPECT_THAT(child.out, ContainsRegex("\\[CRIT\\] Failed to write minidump for 'core_tests' to "
                                         "'.*', version '.*' \\(Not a directory\\)\n"));
}

CHILD_CASE(hangsOverItsCrash) {
    const test::ScriptedObserver observer({core::kChannelCrit}, [](const std::string&) {
        std::raise(alarm(0) > 0 ? SIGALRM : SIGKILL); // as if the time were over
    });
    core::Arguments arguments({"tool", "abort"});
    core::runGuardedWith(crash, arguments.count(), arguments.values());
}

TEST(GuardSignals, LimitTheTimeOfACrash) {
    const test::WorkingFolder folder;
    EXPECT_EQ(test::runChild("hangsOverItsCrash").status, 129);
}

} // namespace
