#pragma once

#include "core_check.h"
#include "core_stacktrace.h"

#include <string>
#include <string_view>
#include <vector>

/// Between core_stacktrace.cpp and its platform halves; not for other modules.
namespace core::detail {

inline constexpr CheckSite kNoSymbolEngine{"core_stacktrace_win32.cpp", 186};

/// The printed lines of a walked stack, without the frames to be discarded.
std::vector<std::string> stackLines(const std::vector<StackFrame>& frames);

/// The lines that both platforms log about a walk.
void logNoModule(const std::string& image, const std::string& module, uint64_t base, uint32_t size);
void logNoSymbol(uint64_t address, uint32_t error);
void logNoModuleInfo();

/// Windows: where the symbol engine looks for symbols, a list separated by ';'. What the
/// system cannot tell is empty and left out.
std::string symbolSearchPath(const std::string& currentFolder, const std::string& executable,
                             const std::string& systemRoot);

} // namespace core::detail
