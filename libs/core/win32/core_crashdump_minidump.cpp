#include "core_crashdump_system.h"

#include <dbghelp.h>

namespace core {
namespace {

/// The system's dump function fails where it cannot write; some versions do not say so.
bool isEmpty(HANDLE file) {
    LARGE_INTEGER size{};
    return GetFileSizeEx(file, &size) != 0 && size.QuadPart == 0;
}

} // namespace

detail::DumpResult detail::writeMinidump(EXCEPTION_POINTERS* pointers, DWORD thread) {
    const DumpPlace& place = dumpPlace();
    CreateDirectoryA(place.folder.c_str(), nullptr);
    HANDLE file =
        CreateFileA(place.file.c_str(), GENERIC_READ | GENERIC_WRITE,
                    FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, CREATE_ALWAYS, 0, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return {false, GetLastError()};
    MINIDUMP_EXCEPTION_INFORMATION exception{thread, pointers, TRUE};
    SetLastError(ERROR_SUCCESS);
    const BOOL written =
        MiniDumpWriteDump(GetCurrentProcess(), GetCurrentProcessId(), file, MiniDumpWithDataSegs,
                          pointers != nullptr ? &exception : nullptr, nullptr, nullptr);
    DumpResult result{written != 0, GetLastError()};
    if (result.written && isEmpty(file))
        result = {false, ERROR_WRITE_FAULT};
    CloseHandle(file);
    return result;
}

detail::FixedText<512> detail::errorText(uint32_t error) {
    FixedText<512> text;
    if (error == ERROR_TIMEOUT) // that of a helper which waits for the heap: so would the system
        return text << "the time for it was over";
    char buffer[512];
    const DWORD length =
        FormatMessageA(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, error,
                       MAKELANGID(LANG_NEUTRAL, SUBLANG_DEFAULT), buffer, sizeof buffer, nullptr);
    return text << std::string_view(buffer, length);
}

} // namespace core
