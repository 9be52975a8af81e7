#pragma once

#include <cstdint>

/// The parts of the guard that only Windows has.
namespace core {

/// core::onInvalidParameter as the runtime calls it, for _set_invalid_parameter_handler.
/// Texts may be null, and are in the runtime's release builds.
void onInvalidParameter(const wchar_t* expression, const wchar_t* function, const wchar_t* file,
                        unsigned int line, uintptr_t reserved);

} // namespace core
