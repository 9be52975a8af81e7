#include "crashing.h"

#include "core_check.h"

#include <windows.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace crashing {

void sleepForEver() {
    for (;;)
        Sleep(INFINITE);
}

const char* endOfStack() {
    MEMORY_BASIC_INFORMATION memory{};
    VirtualQuery(&memory, &memory, sizeof memory);
    return static_cast<const char*>(memory.AllocationBase);
}

const char* topOfStack() {
    return static_cast<const char*>(reinterpret_cast<const NT_TIB*>(NtCurrentTeb())->StackBase);
}

void runGeneratedCode() {
    // push ebp; mov ebp, esp; sub esp, 16; xor eax, eax; mov [eax], eax
    constexpr unsigned char kCode[] = {0x55, 0x89, 0xe5, 0x83, 0xec, 0x10, 0x31, 0xc0, 0x89, 0x00};
    void* const memory =
        VirtualAlloc(nullptr, 4096, MEM_COMMIT | MEM_RESERVE, PAGE_EXECUTE_READWRITE);
    std::memcpy(memory, kCode, sizeof kCode);
    reinterpret_cast<void (*)()>(memory)();
    sleepForEver(); // so that it is a call
}

void lockHeap() { HeapLock(GetProcessHeap()); }

void lockOutput() { _lock_file(stdout); }

void useUpMemory() {
    for (size_t size = 1U << 26U; size >= 16; size /= 2) {
        while (std::malloc(size) != nullptr) // NOLINT: to be lost
            ;
    }
}

void useUpDescriptors() {}

void replaceProgram() {}

void signalFromOutside() { core::deliberateFault(); }

void fillOutput() {
    HANDLE output = GetStdHandle(STD_OUTPUT_HANDLE);
    DWORD mode = PIPE_NOWAIT;
    SetNamedPipeHandleState(output, &mode, nullptr, nullptr);
    const char text[4096] = {};
    for (DWORD written = 1; written != 0;)
        WriteFile(output, text, sizeof text, &written, nullptr);
    mode = PIPE_WAIT;
    SetNamedPipeHandleState(output, &mode, nullptr, nullptr);
}

} // namespace crashing
