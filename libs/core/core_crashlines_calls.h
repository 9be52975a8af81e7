#pragma once

#include "core_crashdump_calls.h"
#include "core_timespec.h"

#include <string_view>

/// The lines that tell of a crash, made in fixed memory and written by plain system calls.
/// Not for callers, and not installed.
///
/// Each function may be cut off by a fault or the end of its time; none needs another.
namespace core::detail {

/// What is told: about the dump, and on which clock.
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

/// Raises the check that the program's name is not known, if it is not.
void checkCrashNames();

/// The platform's: to standard output, behind what the runtime still holds for it, and
/// without waiting for a reader who does not read.
void writeToStandardOutput(std::string_view text);

/// The platform's: adds a line to a regular file, which is made if its folder exists.
void appendToFile(PathText& path, std::string_view line);

} // namespace core::detail
