#pragma once

#include "core_crashdump.h"

#include <cstdint>
#include <string_view>

/// The guarded start of a program: what runs around everything else and gives a
/// crash its exit status.
namespace core {

/// What a program does, with its arguments; the result is its status.
using StartFunction = int (*)(int argc, char** argv);

/// Runs `start` under the crash guard and returns its result.
///
/// A crash ends `start`, leaves what writeCrashDump writes and yields kCrashStatus: an
/// exception that nobody catches, std::terminate and abort, and a fault of the calling
/// thread, stack overflow included: on Windows any structured exception, on Linux a fault
/// signal. Exceptions do not get out of here, and nothing is cleaned up for them: the dump
/// has the stack of the throw. What `start` held or had locked stays as it was, so the
/// process must then end; it does so, with that status, half a second later if nobody else
/// sees to it, and so does one whose stack is too damaged to return, or that meets another
/// fault. All that a crash writes has a time limit. The faults of other threads get the
/// system's default, but wait while a crash of this one is written down. On Windows the
/// runtime's invalid-parameter reports go to `onInvalidParameter` meanwhile.
///
/// An argument "jitd" behind the program's name leaves all of this out, so that a
/// debugger sees the fault itself. One thread at a time; after a run without a crash the
/// handlers that were in force before are in force again.
int runGuardedWith(StartFunction start, int argc, char** argv);

/// Ends the process at once: buffered output is written, but neither exit handlers nor
/// static destructors run. For process entries, on kCrashStatus: the program is still
/// as the crash left it, and nothing of it may run again.
[[noreturn]] void endProcess(int status);

/// Logs on CRIT which argument of which runtime function was invalid.
void onInvalidParameter(std::string_view expression, std::string_view function,
                        std::string_view file, uint32_t line);

namespace detail {
/// The platform's guard without the switch that leaves it out.
int runUnderGuard(StartFunction start, int argc, char** argv);

} // namespace detail
} // namespace core
