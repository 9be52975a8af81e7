#include "internal/core_crashdump_lines.h"

#include <windows.h>

#include <algorithm>
#include <cstdio>
#include <iterator>

namespace core {
namespace {

/// The runtime writes line ends in this way.
template <size_t Size>
void addWithLineEnds(detail::FixedText<Size>& to, std::string_view text) {
    for (const char& character : text)
        to << (character == '\n' ? std::string_view("\r\n") : std::string_view(&character, 1));
}

constinit detail::FixedText<10240> converted;

void writeAll(HANDLE file, std::string_view text) {
    converted.clear();
    addWithLineEnds(converted, text);
    DWORD written = 0;
    WriteFile(file, converted.c_str(), static_cast<DWORD>(converted.view().size()), &written,
              nullptr);
}

} // namespace

void detail::writeToStandardOutput(std::string_view text) {
    HANDLE output = GetStdHandle(STD_OUTPUT_HANDLE);
    if (output != nullptr && output != INVALID_HANDLE_VALUE)
        writeAll(output, text);
}

void detail::appendToFile(PathText& path, std::string_view line) {
    static constinit wchar_t wide[4096];
    if (MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, path.c_str(), -1, wide,
                            static_cast<int>(std::size(wide))) == 0)
        return;
    HANDLE file = CreateFileW(wide, FILE_APPEND_DATA, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                              OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return;
    if (GetFileType(file) == FILE_TYPE_DISK)
        writeAll(file, line);
    CloseHandle(file);
}

} // namespace core
