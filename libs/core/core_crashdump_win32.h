#pragma once

/// The part of the dump that only Windows has.
struct _EXCEPTION_POINTERS; // NOLINT(bugprone-reserved-identifier): the system's name

namespace core {

/// core::writeCrashDump as the filter of a structured exception; `info` may be null.
/// Returns EXCEPTION_EXECUTE_HANDLER (1).
long writeCrashDump(_EXCEPTION_POINTERS* info);

} // namespace core
