#include "core_guard.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstddef>

namespace {

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

} // namespace
