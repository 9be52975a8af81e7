#include <windows.h>

#include <tlhelp32.h>

#include <cstdio>
#include <cstdlib>
#include <string_view>

// Has the main thread of a running program jump to an address, as an overwritten pointer
// would, so that its fault is one of the program itself:
//     provoke_fault NAME.exe ADDRESS

namespace {

/// The system lists a process's threads in the order of their creation.
DWORD mainThreadOf(std::string_view program) {
    HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS | TH32CS_SNAPTHREAD, 0);
    PROCESSENTRY32 process{};
    process.dwSize = sizeof(process);
    BOOL found = Process32First(snapshot, &process);
    while (found != 0 && program != process.szExeFile)
        found = Process32Next(snapshot, &process);
    THREADENTRY32 thread{};
    thread.dwSize = sizeof(thread);
    found = found != 0 ? Thread32First(snapshot, &thread) : FALSE;
    while (found != 0 && thread.th32OwnerProcessID != process.th32ProcessID)
        found = Thread32Next(snapshot, &thread);
    CloseHandle(snapshot);
    return found != 0 ? thread.th32ThreadID : 0;
}

bool jump(HANDLE thread, DWORD address) {
    if (SuspendThread(thread) == static_cast<DWORD>(-1))
        return false;
    CONTEXT context{};
    context.ContextFlags = CONTEXT_CONTROL;
    bool done = GetThreadContext(thread, &context) != 0;
    context.Eip = address;
    done = done && SetThreadContext(thread, &context) != 0;
    return ResumeThread(thread) != static_cast<DWORD>(-1) && done;
}

} // namespace

int main(int argc, char** argv) {
    const DWORD threadId = argc == 3 ? mainThreadOf(argv[1]) : 0;
    HANDLE thread = threadId != 0 ? OpenThread(THREAD_ALL_ACCESS, FALSE, threadId) : nullptr;
    if (thread == nullptr || !jump(thread, std::strtoul(argv[2], nullptr, 0))) {
        std::fprintf(stderr, "provoke_fault: error %lu\n", GetLastError());
        return 1;
    }
    PostThreadMessageW(threadId, WM_NULL, 0, 0); // it may be waiting inside the system
    CloseHandle(thread);
    return 0;
}
