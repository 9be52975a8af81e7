#include <windows.h>

#include <tlhelp32.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

// Makes a running program fault or load a library:
//     provoke_fault NAME.exe ADDRESS      makes its main thread jump there, as an overwritten
//                                         pointer would, so that the fault is its own
//     provoke_fault NAME.exe load FILE    makes it load a library; status 3: not found

namespace {

struct Running {
    DWORD process;
    DWORD mainThread; // 0: there is no such program
};

/// The system lists a process's threads in the order of their creation.
Running find(std::string_view program) {
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
    return {process.th32ProcessID, found != 0 ? thread.th32ThreadID : 0};
}

bool jump(DWORD threadId, const char* address) {
    HANDLE thread = OpenThread(THREAD_ALL_ACCESS, FALSE, threadId);
    if (thread == nullptr || SuspendThread(thread) == static_cast<DWORD>(-1))
        return false;
    CONTEXT context{};
    context.ContextFlags = CONTEXT_CONTROL;
    bool done = GetThreadContext(thread, &context) != 0;
    context.Eip = std::strtoul(address, nullptr, 0);
    done = done && SetThreadContext(thread, &context) != 0;
    done = ResumeThread(thread) != static_cast<DWORD>(-1) && done;
    PostThreadMessageW(threadId, WM_NULL, 0, 0); // it may be waiting in a system call
    CloseHandle(thread);
    return done;
}

/// Returns this program's status. The system's library has the same address in all programs.
int load(DWORD processId, std::string library) {
    HANDLE process = OpenProcess(PROCESS_ALL_ACCESS, FALSE, processId);
    const std::size_t size = library.size() + 1;
    void* name = VirtualAllocEx(process, nullptr, size, MEM_COMMIT, PAGE_READWRITE);
    WriteProcessMemory(process, name, library.c_str(), size, nullptr);
    HANDLE thread = CreateRemoteThread(process, nullptr, 0,
                                       reinterpret_cast<LPTHREAD_START_ROUTINE>(LoadLibraryA), name,
                                       0, nullptr);
    DWORD module = 0;
    if (WaitForSingleObject(thread, INFINITE) != WAIT_OBJECT_0 ||
        GetExitCodeThread(thread, &module) == 0)
        return 1;
    CloseHandle(thread);
    CloseHandle(process);
    return module != 0 ? 0 : 3;
}

} // namespace

int main(int argc, char** argv) {
    const Running running = argc >= 3 ? find(argv[1]) : Running{};
    int status = 1;
    if (running.mainThread != 0 && argc == 4 && argv[2] == std::string_view("load"))
        status = load(running.process, argv[3]);
    else if (running.mainThread != 0 && argc == 3 && jump(running.mainThread, argv[2]))
        status = 0;
    if (status == 1)
        std::fprintf(stderr, "provoke_fault: error %lu\n", GetLastError());
    return status;
}
