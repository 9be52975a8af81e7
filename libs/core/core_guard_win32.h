#pragma once

#include <cstdint>

/// The parts of the guard that only Windows has.
struct _EXCEPTION_POINTERS; // NOLINT(bugprone-reserved-identifier): the system's name

namespace core {

/// core::writeCrashDump as the filter of a structured exception: of that exception, or,
/// where `info` is null, without one. Returns EXCEPTION_EXECUTE_HANDLER (1).
long writeCrashDump(_EXCEPTION_POINTERS* info);

/// core::onInvalidParameter as the runtime calls it, for _set_invalid_parameter_handler.
/// Texts may be null, and are in release builds of the runtime.
void onInvalidParameter(const wchar_t* expression, const wchar_t* function, const wchar_t* file,
                        unsigned int line, uintptr_t reserved);

} // namespace core
