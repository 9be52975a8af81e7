#include "core_crashdump_calls.h"

#include <windows.h>

#include <dbghelp.h>

namespace core {
namespace {

constexpr DWORD kOverflowTimeLimit = 60'000; // milliseconds

struct Task {
    HANDLE file;
    MINIDUMP_EXCEPTION_INFORMATION exception;
    bool written;
    DWORD error;
};
constinit Task task{}; // outlives a thread that was given up

DWORD WINAPI perform(void*) {
    task.written = MiniDumpWriteDump(
                       GetCurrentProcess(), GetCurrentProcessId(), task.file, MiniDumpWithDataSegs,
                       task.exception.ExceptionPointers != nullptr ? &task.exception : nullptr,
                       nullptr, nullptr) != 0;
    task.error = GetLastError();
    return 0;
}

void performOnNewThread() {
    HANDLE thread = CreateThread(nullptr, 0, perform, nullptr, 0, nullptr);
    if (thread == nullptr)
        task.error = GetLastError();
    // With a limit, since the fault may hold what a thread needs to begin.
    else if (WaitForSingleObject(thread, kOverflowTimeLimit) != WAIT_OBJECT_0)
        task.error = WAIT_TIMEOUT;
}

std::string systemText(DWORD error) {
    char* buffer = nullptr;
    const DWORD length = FormatMessageA(FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM,
                                        nullptr, error, MAKELANGID(LANG_NEUTRAL, SUBLANG_DEFAULT),
                                        reinterpret_cast<char*>(&buffer), 0, nullptr);
    std::string text(buffer, length);
    LocalFree(buffer);
    return text;
}

} // namespace

bool detail::writeDump(const DumpPlace& place, void* fault, std::string& error) {
    auto* const exception = static_cast<EXCEPTION_POINTERS*>(fault);
    CreateDirectoryA(place.folder.c_str(), nullptr);
    // A failure to open it shows up as one of the next step.
    HANDLE file =
        CreateFileA(place.file.c_str(), GENERIC_READ | GENERIC_WRITE,
                    FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, CREATE_ALWAYS, 0, nullptr);
    task = {file, {GetCurrentThreadId(), exception, TRUE}, false, 0};
    // What is left of an overflown stack does not do for the system's work.
    if (exception != nullptr &&
        exception->ExceptionRecord->ExceptionCode == EXCEPTION_STACK_OVERFLOW)
        performOnNewThread();
    else
        perform(nullptr);
    if (!task.written)
        error = systemText(task.error);
    CloseHandle(file);
    return task.written;
}

} // namespace core
