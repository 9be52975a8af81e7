#include <windows.h>

#include <tlhelp32.h>

#include <cstdio>
#include <cstdlib>
#include <string_view>

// Has the main thread of a running program jump to an address, as an overwritten pointer
// would, so that its fault is one of the program itself:
//     provoke_fault NAME.exe ADDRESS

namespace {

DWORD processNamed(std::string_view name) {
    HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0);
    PROCESSENTRY32 entry{};
    entry.dwSize = sizeof(entry);
    DWORD found = 0;
    for (BOOL more = Process32First(snapshot, &entry); more != 0 && found == 0;
         more = Process32Next(snapshot, &entry)) {
        if (name == entry.szExeFile)
            found = entry.th32ProcessID;
    }
    CloseHandle(snapshot);
    return found;
}

/// The system lists a process's threads in the order of their creation.
DWORD mainThreadOf(DWORD process) {
    HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
    THREADENTRY32 entry{};
    entry.dwSize = sizeof(entry);
    DWORD found = 0;
    for (BOOL more = Thread32First(snapshot, &entry); more != 0 && found == 0;
         more = Thread32Next(snapshot, &entry)) {
        if (entry.th32OwnerProcessID == process)
            found = entry.th32ThreadID;
    }
    CloseHandle(snapshot);
    return found;
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
    const DWORD process = argc == 3 ? processNamed(argv[1]) : 0;
    const DWORD threadId = process != 0 ? mainThreadOf(process) : 0;
    HANDLE thread = threadId != 0 ? OpenThread(THREAD_ALL_ACCESS, FALSE, threadId) : nullptr;
    if (thread == nullptr || !jump(thread, std::strtoul(argv[2], nullptr, 0))) {
        std::fprintf(stderr, "provoke_fault: error %lu\n", GetLastError());
        return 1;
    }
    PostThreadMessageW(threadId, WM_NULL, 0, 0); // it may be waiting inside the system
    CloseHandle(thread);
    return 0;
}
