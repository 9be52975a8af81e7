#include "crashing.h"

#include "core_check.h"
#include "internal/core_fixedtext.h"

#include <windows.h>

#include <fcntl.h>
#include <io.h>

#include <array>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <thread>

namespace core {
extern detail::FixedText<4096> uncaughtException;
extern std::array<void (*)(), 32> uncaughtThrow;
} // namespace core

namespace crashing {

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
    sleepForEver(); // so that it is no tail call
}

void lockHeap() { HeapLock(GetProcessHeap()); }

void lockLoader() {
    using Lock = LONG(NTAPI*)(ULONG, ULONG*, ULONG_PTR*);
    const auto lock = reinterpret_cast<Lock>(reinterpret_cast<void (*)()>(
        GetProcAddress(GetModuleHandleA("ntdll.dll"), "LdrLockLoaderLock")));
    ULONG_PTR cookie = 0;
    lock(0, nullptr, &cookie);
}

void lockOutput() { _lock_file(stdout); }

void useUpMemory() {
    for (size_t size = 1U << 26U; size >= 16; size /= 2) {
        while (std::malloc(size) != nullptr) // NOLINT: to be lost
            ;
    }
}

// The runtime's descriptors, which are few; the system has millions of handles.
void useUpDescriptors() {
    while (_open("NUL", _O_RDONLY) >= 0)
        ;
}

void replaceProgram() {}

void signalFromOutside() { core::deliberateFault(); }

// Another thread writes and gets stuck; this thread sees when nothing more is accepted.
void fillOutput() {
    static std::atomic<int> writes{0};
    std::thread([] {
        const char text[4096] = {};
        for (DWORD written = 1; written != 0; ++writes)
            WriteFile(GetStdHandle(STD_OUTPUT_HANDLE), text, sizeof text, &written, nullptr);
    }).detach();
    for (int before = -1; before != writes; Sleep(200))
        before = writes;
}

void showThrow() {
    std::fprintf(stderr, "thrown %s\n", core::uncaughtException.c_str());
    for (const auto call : core::uncaughtThrow)
        std::fprintf(stderr, "called %p\n", reinterpret_cast<void*>(call));
}

} // namespace crashing
