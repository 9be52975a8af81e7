#pragma once

#include <chrono>
#include <cstdint>
#include <thread>

/// The platform's parts of the crashing program.
namespace crashing {

[[noreturn]] inline void sleepForEver() {
    for (;;)
        std::this_thread::sleep_for(std::chrono::hours(1));
}

/// The lowest address of this thread's stack, and the first address above the stack.
const char* endOfStack();
const char* topOfStack();

/// Calls a function generated at run time, with its own stack frame, that writes to address 0.
void runGeneratedCode();

/// Locked by this thread and never unlocked.
void lockHeap();
void lockLoader();
void lockOutput();

void useUpMemory();
void useUpDescriptors();

/// Puts another file in place of this program's.
void replaceProgram();

/// Makes another process send this one a fault signal.
void signalFromOutside();

/// Writes to standard output until it accepts nothing more.
void fillOutput();

/// Prints the dump's variables about an exception, where no debugger can read them.
void showThrow();

} // namespace crashing
