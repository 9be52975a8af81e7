#pragma once

#include <chrono>
#include <cstdint>
#include <thread>

/// What the crashing program does by its platform's calls.
namespace crashing {

[[noreturn]] inline void sleepForEver() {
    for (;;)
        std::this_thread::sleep_for(std::chrono::hours(1));
}

/// The lowest address of this thread's stack, and the first above it.
const char* endOfStack();
const char* topOfStack();

/// Calls a function made at run time, with a frame of its own, that writes to nowhere.
void runGeneratedCode();

/// For this thread, and never given back.
void lockHeap();
void lockLoader();
void lockOutput();

void useUpMemory();
void useUpDescriptors();

/// Puts another file in place of this program's.
void replaceProgram();

/// Has another process end this one by a fault's signal.
void signalFromOutside();

/// Writes to standard output until nobody reads any more.
void fillOutput();

/// Prints what the dump holds of an exception, where nothing else can read it.
void showThrow();

} // namespace crashing
