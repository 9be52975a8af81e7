#include "collect_arguments.h"

#include "core_utf.h"
#include "internal/core_handle_win32.h"

#include <windows.h>

#include <shellapi.h>

namespace collect {

/// Those of `main` are in the system's narrow encoding, which cannot hold every name.
std::vector<std::string> utf8Arguments(int argc, char** argv) {
    int count = 0;
    const core::LocalMemory<LPWSTR[]> wide(CommandLineToArgvW(GetCommandLineW(), &count));
    if (wide == nullptr)
        return {argv, argv + argc};
    std::vector<std::string> arguments;
    for (size_t i = 0; i < static_cast<size_t>(count); ++i) {
        std::string text;
        (void)core::toUtf8(wide[i], text); // invalid text becomes empty, which is refused
        arguments.push_back(text);
    }
    return arguments;
}

} // namespace collect
