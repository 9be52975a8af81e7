#pragma once

#include "core_crashdump_calls.h"

#include <windows.h>

/// The pieces of a dump on Windows; for sources only.
namespace core::detail {

/// Writes the dump of a fault of `thread`, or of none, over the file. For a thread that is
/// in order: it takes a good deal of stack, and memory of the heap.
DumpResult writeMinidump(EXCEPTION_POINTERS* pointers, DWORD thread);

} // namespace core::detail
