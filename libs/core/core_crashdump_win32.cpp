#include "core_crashdump_calls.h"
#include "core_wrapper.h"

#include <windows.h>

#include <dbghelp.h>

namespace core {
namespace {

constexpr DWORD kTimeLimit = 60'000; // milliseconds

// Outlives a helper that was given up.
constinit MINIDUMP_EXCEPTION_INFORMATION distress{};
constinit detail::DumpResult distressResult{};

detail::DumpResult writeFor(MINIDUMP_EXCEPTION_INFORMATION exception,
                            const detail::DumpPlace& place) {
    CreateDirectoryA(place.folder.c_str(), nullptr);
    // A failure to open it shows up as one of the next step.
    HANDLE file =
        CreateFileA(place.file.c_str(), GENERIC_READ | GENERIC_WRITE,
                    FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, CREATE_ALWAYS, 0, nullptr);
    detail::DumpResult result;
    result.written =
        MiniDumpWriteDump(GetCurrentProcess(), GetCurrentProcessId(), file, MiniDumpWithDataSegs,
                          exception.ExceptionPointers != nullptr ? &exception : nullptr, nullptr,
                          nullptr) != 0;
    result.error = GetLastError();
    CloseHandle(file);
    return result;
}

MINIDUMP_EXCEPTION_INFORMATION ofThisThread(void* fault) {
    return {GetCurrentThreadId(), static_cast<EXCEPTION_POINTERS*>(fault), TRUE};
}

DWORD WINAPI helpInDistress(void*) {
    distressResult = writeFor(distress, detail::dumpPlace(Wrapper::moduleBaseName()));
    return 0;
}

} // namespace

detail::DumpResult detail::writeDump(const DumpPlace& place, void* fault) {
    return writeFor(ofThisThread(fault), place);
}

void detail::writeDumpInDistress(void* fault, DumpResult& result) {
    distress = ofThisThread(fault);
    HANDLE helper = CreateThread(nullptr, 0, helpInDistress, nullptr, 0, nullptr);
    if (helper == nullptr)
        result.error = GetLastError();
    // With a limit, since this thread may hold what a new one needs to begin.
    else if (WaitForSingleObject(helper, kTimeLimit) == WAIT_OBJECT_0)
        result = distressResult;
    else
        result.error = WAIT_TIMEOUT;
}

std::string detail::errorText(uint32_t error) {
    char* buffer = nullptr;
    const DWORD length = FormatMessageA(FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM,
                                        nullptr, error, MAKELANGID(LANG_NEUTRAL, SUBLANG_DEFAULT),
                                        reinterpret_cast<char*>(&buffer), 0, nullptr);
    std::string text(buffer, length);
    LocalFree(buffer);
    return text;
}

} // namespace core
