#include "core_guard.h"

#include "child_process.h"
#include "core_check.h"

#include <csignal>
#include <cstddef>
#include <cstdlib>
#include <thread>

namespace {

int crash(int, char** argv) {
    const std::string kind = argv[1];
    if (kind == "abort")
        std::abort();
    if (kind == "anotherThread")
        std::thread(core::deliberateFault).join();
    return std::raise(std::stoi(kind));
}

CHILD_CASE(guardedSignal) {
    core::Arguments arguments({"tool", argument});
    std::exit(core::runGuardedWith(crash, arguments.count(), arguments.values()));
}

TEST(GuardProcess, TakesAbortsAndFaultSignals) {
    EXPECT_EQ(test::runChild("guardedSignal", "abort").status, 129);
    for (const int signal : {SIGBUS, SIGFPE, SIGTRAP})
        EXPECT_EQ(test::runChild("guardedSignal", std::to_string(signal)).status, 129) << signal;
    EXPECT_EQ(test::runChild("guardedSignal", std::to_string(SIGTERM)).signal, SIGTERM);
}

TEST(GuardProcess, LeavesTheFaultsOfOtherThreadsToTheSystem) {
    EXPECT_EQ(test::runChild("guardedSignal", "anotherThread").signal, SIGSEGV);
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
    const int status = core::runGuardedWith([](int, char**) { return 0; }, 0, nullptr);
    if (status == 0)
        core::deliberateFault();
    return status;
}

CHILD_CASE(nestedGuard) { std::exit(core::runGuardedWith(faultAfterNestedRun, 0, nullptr)); }

TEST(GuardProcess, OutlivesANestedGuard) { EXPECT_EQ(test::runChild("nestedGuard").status, 129); }

} // namespace
