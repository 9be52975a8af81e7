#include "core_guard.h"

#include "child_process.h"
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

constexpr int kCrashed = 129;

/// Raises the signal, if it is one; a guard inside this one has come and gone.
int crash(int, char** argv) {
    core::Paths::setDefaultPaths();
    core::runGuardedWith([](int, char**) { return 0; }, 0, nullptr);
    if (argv[1] == std::string("lostStack"))
        asm volatile("xorl %esp, %esp\n\tjmp *%rsp");
    return std::raise(std::stoi(argv[1]));
}

CHILD_CASE(guardedSignal) {
    core::Arguments arguments({"tool", argument});
    std::exit(core::runGuardedWith(crash, arguments.count(), arguments.values()));
}

TEST(GuardSignals, TakesAbortsAndFaults) {
    const test::WorkingFolder folder;
    for (const int signal : {SIGABRT, SIGBUS, SIGFPE, SIGTRAP})
        EXPECT_EQ(test::runChild("guardedSignal", std::to_string(signal)).status, kCrashed);
    EXPECT_EQ(test::runChild("guardedSignal", std::to_string(SIGTERM)).signal, SIGTERM);
    // The report ends where it meets a fault itself.
    const test::ChildResult child = test::runChild("guardedSignal", "lostStack");
    EXPECT_EQ(child.status, kCrashed);
    EXPECT_THAT(child.out, HasSubstr("[CRIT] Wrote minidump"));
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

std::string reportOf(const std::string& kind) {
    const test::WorkingFolder folder;
    EXPECT_EQ(test::runChild("guardedCrash", kind).status, kCrashed);
    return test::readFile("dumps/core_tests-" + std::string(core::dumpVersionTag()) + ".dmp");
}

TEST(CrashReport, TellsTheFaultAndWhere) {
    const std::string report = reportOf("nullWrite");
    EXPECT_THAT(report, HasSubstr("\nSignal 11 (SIGSEGV), code 1, address 0x0\n"));
    EXPECT_THAT(report, ContainsRegex("\nMemory map\n[0-9a-f]+-[0-9a-f]+ "));
    EXPECT_THAT(report,
                ContainsRegex("\nStack\n    #00 0x[0-9a-f]+ in core::deliberateFault\\(.*\\) "
                              "\\(the program"));
    EXPECT_THAT(reportOf("exception"),
                HasSubstr("\nC++ exception std::runtime_error: out of paper\n"));
}

// Wine takes a file that is not open for a dump that is written.
TEST(CrashReport, ThatCannotBeWrittenIsReported) {
    const test::WorkingFolder folder;
    test::writeFile("dumps", "in the way");
    const test::ChildResult child = test::runChild("guardedCrash", "nullWrite");
    EXPECT_EQ(child.status, kCrashed);
    EXPECT_THAT(child.out, ContainsRegex("\\[CRIT\\] Failed to write minidump for 'core_tests' to "
                                         "'.*', version '.*' \\(Not a directory\\)\n"));
}

CHILD_CASE(hangsOverItsCrash) {
    const test::ScriptedObserver observer({core::kChannelCrit}, [](const std::string&) {
        std::raise(alarm(0) > 0 ? SIGALRM : SIGKILL); // as if the time were over
    });
    core::Arguments arguments({"tool", std::to_string(SIGABRT)});
    core::runGuardedWith(crash, arguments.count(), arguments.values());
}

TEST(GuardSignals, LimitTheTimeOfACrash) {
    const test::WorkingFolder folder;
    EXPECT_EQ(test::runChild("hangsOverItsCrash").status, kCrashed);
}

} // namespace
