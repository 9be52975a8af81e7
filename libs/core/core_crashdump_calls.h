#pragma once

#include "core_crashtext_calls.h"

#include <cstdint>
#include <string_view>

/// How the guard has the dump written. Not for callers, and not installed.
namespace core::detail {

/// What the evidence of this program is named after. It lies in static storage, away from
/// the heap and the stacks, and is asked for before anything can have been damaged.
struct CrashNames {
    FixedText<512> module;      ///< as in the dump's name
    bool moduleIsKnown = false; ///< the system could tell
    FixedText<256> tag;         ///< of the version
    PathText program;           ///< the executable's path
};
const CrashNames& crashNames();

/// Asks for them. At the guard's start, and before a dump without a guard.
void noteCrashNames();

/// Where a dump goes, with '\\' between folders on Linux, too.
struct DumpPlace {
    PathText folder;
    PathText file;
};

/// The place of this program's dumps: from the names and the folder as it is set now.
/// Neither allocates nor locks; valid until the next call.
const DumpPlace& dumpPlace();

struct DumpResult {
    bool written = false;
    uint32_t error = 0; ///< the system's number, if it was not
};

/// The system's text for an error.
FixedText<512> errorText(uint32_t error);

} // namespace core::detail
