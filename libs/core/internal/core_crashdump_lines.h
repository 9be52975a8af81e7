#pragma once

#include "core_timespec.h"
#include "internal/core_fixedtext.h"

#include <cstdint>
#include <string>
#include <string_view>

/// What tells of a crash: names, places and lines. Between core_crashdump.cpp, its platform
/// halves and their pieces; not for other modules.
namespace core::detail {

/// The names in this program's dump and lines. They are in static storage, away from the
/// heap and the stacks, and are looked up before anything can have been damaged.
struct CrashNames {
    FixedText<512> module;      ///< as in the dump's name
    bool moduleIsKnown = false; ///< the system could tell
    FixedText<256> tag;         ///< of the version
    PathText program;           ///< the executable's path
};
const CrashNames& crashNames();

/// Looks them up: when the guard starts, and before a dump without a guard.
void noteCrashNames();
bool crashNamesAreNoted();

/// The path of the program's file; empty if the system cannot tell. In the platform's
/// half.
std::string programPath();

/// Fails a check if the program's name is not known.
void checkCrashNames();

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
    uint32_t error = 0; ///< the system's number, if it was not written
};

/// The system's text for an error.
FixedText<512> errorText(uint32_t error);

// ---- The uncaught C++ exception. Asking it runs the program's code, in which anything
// may go wrong.

/// The thrown object, which identifies the throw; null if there is none.
const void* currentException();

/// Adds its ": what()", if it has one.
void addExceptionText(FixedText<4096>& text);

/// Makes the raw name of a type readable, if memory can be allocated.
void demangleType(FixedText<512>& type);

// ---- The lines that tell of a crash, made in fixed memory and written by plain system calls.
// Each function may be cut off by a fault or the end of its time; none needs another.

/// What the lines say, and which have been written.
struct CrashTold {
    DumpResult dump;
    CivilTime time; ///< the computer's local time
    bool echoed = false;
    bool recorded = false;
};

/// Shows the line on CRIT on standard output, if the channel is enabled and echoed.
void echoDumpLine(CrashTold& told);

/// Hands the line on CRIT to the log's implementation, observers and history.
void deliverDumpLine(const CrashTold& told);

/// Adds the line to dumps.log.
void recordCrash(CrashTold& told);

/// Writes to standard output, after what the runtime has buffered. In the platform's
/// half.
void writeToStandardOutput(std::string_view text);

/// Adds a line to a regular file, which is created if its folder exists. In the
/// platform's half.
void appendToFile(PathText& path, std::string_view line);

} // namespace core::detail
